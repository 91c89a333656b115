// CoreFoundation: reference counting, type ids, equality, booleans and the
// container callbacks.

#include <CoreFoundation/CoreFoundation.h>

#include <limits>
#include <string>

#include "cf_describe.h"
#include "cf_values.h"
#include "call_log.h"
#include "platform.h"

using tmxsim::cf_kind;
using tmxsim::cf_value;
using tmxsim::log_line;
using tmxsim::platform;

// What the boolean constants point at; the platform maps these addresses to
// its own boolean objects.
struct __CFBoolean {
  bool value;
};

namespace {

constexpr __CFBoolean true_tag{true};
constexpr __CFBoolean false_tag{false};

// The calls the tool makes for every record: see quiet_platform().

[[gnu::always_inline]] inline void release(platform& state, CFTypeRef cf) {
  if (cf == nullptr) {
    tmxsim::count_misuse(state, "NULL released");
  } else if (cf_value* value = tmxsim::find_live(state, cf)) {
    if (!state.cf.release_owned(*value))
      tmxsim::count_misuse(state, "released more often than owned");
  }
}

[[gnu::noinline]] void release_and_log(CFTypeRef cf) {
  platform& state = tmxsim::the_platform();
  if (!state.log.on()) return release(state, cf);
  const std::string name = tmxsim::cf_name(state.cf, cf);
  release(state, cf);
  log_line(state.log, "CFRelease").word(name);
}

[[gnu::always_inline]] inline CFTypeID type_id_of(platform& state, CFTypeRef cf) {
  const cf_value* value = tmxsim::find_live(state, cf);
  return value != nullptr ? tmxsim::type_id(value->kind) : 0;
}

[[gnu::noinline]] CFTypeID type_id_and_log(CFTypeRef cf) {
  platform& state = tmxsim::the_platform();
  const CFTypeID id = type_id_of(state, cf);
  if (state.log.on())
    log_line(state.log, "CFGetTypeID")
        .word(tmxsim::cf_name(state.cf, cf))
        .returns()
        .number(static_cast<std::int64_t>(id));
  return id;
}

}  // namespace

extern "C" {

// The container callbacks hold and drop references inside the platform, as a
// container made with them does.
static const void* retain_callback(CFAllocatorRef, const void* value) {
  tmxsim::the_platform().cf.retain_held(value);
  return value;
}

static void release_callback(CFAllocatorRef, const void* value) {
  tmxsim::the_platform().cf.release_held(value);
}

static Boolean equal_callback(const void* a, const void* b) {
  return tmxsim::cf_equal(tmxsim::the_platform().cf, a, b);
}

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = &true_tag;
const CFBooleanRef kCFBooleanFalse = &false_tag;
const CFArrayCallBacks kCFTypeArrayCallBacks = {0, retain_callback, release_callback,
                                                nullptr, equal_callback};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {
    0, retain_callback, release_callback, nullptr, equal_callback, nullptr};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {
    0, retain_callback, release_callback, nullptr, equal_callback};

CFTypeRef CFRetain(CFTypeRef cf) {
  platform& state = tmxsim::the_platform();
  if (cf == nullptr)
    tmxsim::count_misuse(state, "NULL retained");
  else if (cf_value* value = tmxsim::find_live(state, cf))
    state.cf.retain_owned(*value);
  if (state.log.on()) log_line(state.log, "CFRetain").word(tmxsim::cf_name(state.cf, cf));
  return cf;
}

void CFRelease(CFTypeRef cf) {
  if (platform* state = tmxsim::quiet_platform()) return release(*state, cf);
  release_and_log(cf);
}

CFIndex CFGetRetainCount(CFTypeRef cf) {
  platform& state = tmxsim::the_platform();
  const cf_value* value = tmxsim::find_live(state, cf);
  CFIndex count = 0;
  if (value != nullptr)
    count = value->constant ? std::numeric_limits<CFIndex>::max() : value->owned + value->held;
  if (state.log.on())
    log_line(state.log, "CFGetRetainCount").word(tmxsim::cf_name(state.cf, cf)).returns().number(count);
  return count;
}

CFTypeID CFGetTypeID(CFTypeRef cf) {
  if (platform* state = tmxsim::quiet_platform()) return type_id_of(*state, cf);
  return type_id_and_log(cf);
}

Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2) {
  platform& state = tmxsim::the_platform();
  const bool live = tmxsim::find_live(state, cf1) != nullptr &&
                    tmxsim::find_live(state, cf2) != nullptr;
  const bool equal = live && tmxsim::cf_equal(state.cf, cf1, cf2);
  if (state.log.on())
    log_line(state.log, "CFEqual")
        .word(tmxsim::cf_name(state.cf, cf1))
        .word(tmxsim::cf_name(state.cf, cf2))
        .returns()
        .word(equal ? "true" : "false");
  return equal;
}

CFTypeID CFBooleanGetTypeID(void) {
  return tmxsim::answer_type_id("CFBooleanGetTypeID", cf_kind::boolean);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  platform& state = tmxsim::the_platform();
  const cf_value* value = tmxsim::find_live(state, boolean, cf_kind::boolean);
  const bool result = value != nullptr && value->boolean;
  if (state.log.on())
    log_line(state.log, "CFBooleanGetValue")
        .word(tmxsim::cf_name(state.cf, boolean))
        .returns()
        .word(result ? "true" : "false");
  return result;
}

}  // extern "C"
