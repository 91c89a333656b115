// CoreFoundation: numbers.

#include <CoreFoundation/CoreFoundation.h>

#include "cf_describe.h"
#include "cf_numbers.h"
#include "call_log.h"
#include "platform.h"

using tmxsim::cf_kind;
using tmxsim::cf_value;
using tmxsim::log_line;
using tmxsim::platform;

namespace {

[[gnu::always_inline]] inline bool value_of(platform& state, CFNumberRef number,
                                            CFNumberType theType, void* valuePtr) {
  const cf_value* value = tmxsim::find_live(state, number, cf_kind::number);
  return value != nullptr && valuePtr != nullptr &&
         tmxsim::load_number(*value, theType, valuePtr);
}

// CFNumberGetValue is called for every record: see quiet_platform().
[[gnu::noinline]] bool value_and_log(CFNumberRef number, CFNumberType theType, void* valuePtr) {
  platform& state = tmxsim::the_platform();
  if (!state.log.on()) return value_of(state, number, theType, valuePtr);
  const cf_value* value = tmxsim::find_live(state, number, cf_kind::number);
  const bool exact = value != nullptr && valuePtr != nullptr &&
                     tmxsim::load_number(*value, theType, valuePtr);
  log_line(state.log, "CFNumberGetValue")
      .word(tmxsim::cf_name(state.cf, number))
      .word(tmxsim::number_type_name(theType))
      .returns()
      .word(exact ? "true" : "false")
      .word(value != nullptr ? tmxsim::cf_contents(state.cf, number) : "");
  return exact;
}

}  // namespace

extern "C" {

CFTypeID CFNumberGetTypeID(void) {
  return tmxsim::answer_type_id("CFNumberGetTypeID", cf_kind::number);
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType theType, const void* valuePtr) {
  platform& state = tmxsim::the_platform();
  const cf_value* made = nullptr;
  if (valuePtr != nullptr && tmxsim::known_number_type(theType)) {
    cf_value& number = state.cf.create(cf_kind::number, true);
    tmxsim::store_number(number, theType, valuePtr);
    made = &number;
  }
  const void* result = made != nullptr ? state.cf.ref(*made) : nullptr;
  if (state.log.on())
    log_line(state.log, "CFNumberCreate")
        .word(tmxsim::number_type_name(theType))
        .word(made != nullptr ? tmxsim::cf_contents(state.cf, result) : "NULL")
        .returns()
        .word(tmxsim::cf_name(state.cf, result));
  return static_cast<CFNumberRef>(result);
}

CFNumberType CFNumberGetType(CFNumberRef number) {
  platform& state = tmxsim::the_platform();
  const cf_value* value = tmxsim::find_live(state, number, cf_kind::number);
  const CFNumberType type = value != nullptr ? value->number_type : CFNumberType{};
  if (state.log.on())
    log_line(state.log, "CFNumberGetType")
        .word(tmxsim::cf_name(state.cf, number))
        .returns()
        .word(tmxsim::number_type_name(type));
  return type;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr) {
  if (platform* state = tmxsim::quiet_platform())
    return value_of(*state, number, theType, valuePtr);
  return value_and_log(number, theType, valuePtr);
}

}  // extern "C"
