// CoreFoundation: arrays and dictionaries.

#include <CoreFoundation/CoreFoundation.h>

#include <string>

#include "cf_describe.h"
#include "cf_values.h"
#include "call_log.h"
#include "platform.h"

using tmxsim::cf_kind;
using tmxsim::cf_value;
using tmxsim::log_line;
using tmxsim::platform;

namespace {

// A container that retains can hold only live objects.
bool can_hold(platform& state, bool retains, const void* element) {
  if (!retains || state.cf.find(element) != nullptr) return true;
  tmxsim::count_misuse(state, "not a live object in a retaining container");
  return false;
}

bool can_change(platform& state, const cf_value* container) {
  if (container == nullptr) return false;
  if (container->is_mutable) return true;
  tmxsim::count_misuse(state, "immutable object changed");
  return false;
}

cf_value& new_array(platform& state, const CFArrayCallBacks* callBacks, bool is_mutable) {
  cf_value& array = state.cf.create(cf_kind::array, true);
  array.is_mutable = is_mutable;
  array.retains_values = callBacks != nullptr && callBacks->retain != nullptr;
  return array;
}

cf_value& new_dictionary(platform& state, const CFDictionaryKeyCallBacks* keyCallBacks,
                         const CFDictionaryValueCallBacks* valueCallBacks,
                         bool is_mutable) {
  cf_value& dictionary = state.cf.create(cf_kind::dictionary, true);
  dictionary.is_mutable = is_mutable;
  dictionary.retains_keys = keyCallBacks != nullptr && keyCallBacks->retain != nullptr;
  dictionary.keys_by_value = keyCallBacks != nullptr && keyCallBacks->equal != nullptr;
  dictionary.retains_values = valueCallBacks != nullptr && valueCallBacks->retain != nullptr;
  return dictionary;
}

void put(platform& state, cf_value& dictionary, const void* key, const void* value,
         tmxsim::put_mode mode) {
  if (can_hold(state, dictionary.retains_keys, key) &&
      can_hold(state, dictionary.retains_values, value))
    tmxsim::dictionary_put(state.cf, dictionary, key, value, mode);
}

[[gnu::always_inline]] inline const void* value_of(platform& state, CFDictionaryRef theDict,
                                                   const void* key) {
  cf_value* dictionary = tmxsim::find_live(state, theDict, cf_kind::dictionary);
  const tmxsim::cf_entry* entry =
      dictionary != nullptr ? tmxsim::dictionary_entry(state.cf, *dictionary, key) : nullptr;
  return entry != nullptr ? entry->second : nullptr;
}

// CFDictionaryGetValue is called for every record: see quiet_platform().
[[gnu::noinline]] const void* value_and_log(CFDictionaryRef theDict, const void* key) {
  platform& state = tmxsim::the_platform();
  const void* value = value_of(state, theDict, key);
  if (!state.log.on()) return value;
  log_line(state.log, "CFDictionaryGetValue")
      .word(tmxsim::cf_name(state.cf, theDict))
      .word(tmxsim::cf_contents(state.cf, key))
      .returns()
      .word(tmxsim::cf_name(state.cf, value));
  return value;
}

void log_made(platform& state, const char* call, const void* made) {
  log_line(state.log, call)
      .word(made != nullptr ? tmxsim::cf_contents(state.cf, made) : "")
      .returns()
      .word(tmxsim::cf_name(state.cf, made));
}

}  // namespace

extern "C" {

CFTypeID CFArrayGetTypeID(void) {
  return tmxsim::answer_type_id("CFArrayGetTypeID", cf_kind::array);
}

CFArrayRef CFArrayCreate(CFAllocatorRef, const void** values, CFIndex numValues,
                         const CFArrayCallBacks* callBacks) {
  platform& state = tmxsim::the_platform();
  cf_value* array = nullptr;
  if (numValues == 0 || (numValues > 0 && values != nullptr)) {
    array = &new_array(state, callBacks, false);
    for (CFIndex i = 0; i < numValues; ++i)
      if (can_hold(state, array->retains_values, values[i]))
        tmxsim::array_append(state.cf, *array, values[i]);
  }
  if (state.log.on()) log_made(state, "CFArrayCreate", array);
  return reinterpret_cast<CFArrayRef>(array);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex capacity,
                                       const CFArrayCallBacks* callBacks) {
  platform& state = tmxsim::the_platform();
  cf_value* array = capacity >= 0 ? &new_array(state, callBacks, true) : nullptr;
  if (state.log.on()) log_made(state, "CFArrayCreateMutable", array);
  return reinterpret_cast<CFMutableArrayRef>(array);
}

void CFArrayAppendValue(CFMutableArrayRef theArray, const void* value) {
  platform& state = tmxsim::the_platform();
  cf_value* array = tmxsim::find_live(state, theArray, cf_kind::array);
  if (can_change(state, array) && can_hold(state, array->retains_values, value))
    tmxsim::array_append(state.cf, *array, value);
  if (state.log.on())
    log_line(state.log, "CFArrayAppendValue")
        .word(tmxsim::cf_name(state.cf, theArray))
        .word(tmxsim::cf_name(state.cf, value));
}

CFIndex CFArrayGetCount(CFArrayRef theArray) {
  platform& state = tmxsim::the_platform();
  const cf_value* array = tmxsim::find_live(state, theArray, cf_kind::array);
  const auto count = array != nullptr ? static_cast<CFIndex>(array->items.size()) : 0;
  if (state.log.on())
    log_line(state.log, "CFArrayGetCount")
        .word(tmxsim::cf_name(state.cf, theArray))
        .returns()
        .number(count);
  return count;
}

const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx) {
  platform& state = tmxsim::the_platform();
  const cf_value* array = tmxsim::find_live(state, theArray, cf_kind::array);
  const void* value = nullptr;
  if (array != nullptr) {
    if (idx >= 0 && static_cast<std::size_t>(idx) < array->items.size())
      value = array->items[static_cast<std::size_t>(idx)];
    else
      tmxsim::count_misuse(state, "index out of range");
  }
  if (state.log.on())
    log_line(state.log, "CFArrayGetValueAtIndex")
        .word(tmxsim::cf_name(state.cf, theArray))
        .number(idx)
        .returns()
        .word(tmxsim::cf_name(state.cf, value));
  return value;
}

CFTypeID CFDictionaryGetTypeID(void) {
  return tmxsim::answer_type_id("CFDictionaryGetTypeID", cf_kind::dictionary);
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values,
                                   CFIndex numValues,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
  platform& state = tmxsim::the_platform();
  cf_value* dictionary = nullptr;
  if (numValues == 0 || (numValues > 0 && keys != nullptr && values != nullptr)) {
    dictionary = &new_dictionary(state, keyCallBacks, valueCallBacks, false);
    for (CFIndex i = 0; i < numValues; ++i)
      put(state, *dictionary, keys[i], values[i], tmxsim::put_mode::set);
  }
  if (state.log.on()) log_made(state, "CFDictionaryCreate", dictionary);
  return reinterpret_cast<CFDictionaryRef>(dictionary);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(
    CFAllocatorRef, CFIndex capacity, const CFDictionaryKeyCallBacks* keyCallBacks,
    const CFDictionaryValueCallBacks* valueCallBacks) {
  platform& state = tmxsim::the_platform();
  cf_value* dictionary =
      capacity >= 0 ? &new_dictionary(state, keyCallBacks, valueCallBacks, true) : nullptr;
  if (state.log.on()) log_made(state, "CFDictionaryCreateMutable", dictionary);
  return reinterpret_cast<CFMutableDictionaryRef>(dictionary);
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef, CFIndex capacity,
                                                     CFDictionaryRef theDict) {
  platform& state = tmxsim::the_platform();
  const cf_value* original = tmxsim::find_live(state, theDict, cf_kind::dictionary);
  cf_value* copy = nullptr;
  if (original != nullptr && capacity >= 0) {
    copy = &state.cf.create(cf_kind::dictionary, true);
    copy->is_mutable = true;
    tmxsim::copy_contents(state.cf, *original, *copy);
  }
  if (state.log.on())
    log_line(state.log, "CFDictionaryCreateMutableCopy")
        .word(tmxsim::cf_name(state.cf, theDict))
        .returns()
        .word(tmxsim::cf_name(state.cf, copy));
  return reinterpret_cast<CFMutableDictionaryRef>(copy);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) {
  platform& state = tmxsim::the_platform();
  const cf_value* dictionary = tmxsim::find_live(state, theDict, cf_kind::dictionary);
  const auto count =
      dictionary != nullptr ? static_cast<CFIndex>(dictionary->entries.size()) : 0;
  if (state.log.on())
    log_line(state.log, "CFDictionaryGetCount")
        .word(tmxsim::cf_name(state.cf, theDict))
        .returns()
        .number(count);
  return count;
}

const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key) {
  if (platform* state = tmxsim::quiet_platform()) return value_of(*state, theDict, key);
  return value_and_log(theDict, key);
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key,
                          const void* value) {
  platform& state = tmxsim::the_platform();
  cf_value* dictionary = tmxsim::find_live(state, theDict, cf_kind::dictionary);
  if (can_change(state, dictionary)) put(state, *dictionary, key, value, tmxsim::put_mode::set);
  if (state.log.on())
    log_line(state.log, "CFDictionarySetValue")
        .word(tmxsim::cf_name(state.cf, theDict))
        .word(tmxsim::cf_contents(state.cf, key))
        .word(tmxsim::cf_name(state.cf, value));
}

void CFDictionaryAddValue(CFMutableDictionaryRef theDict, const void* key,
                          const void* value) {
  platform& state = tmxsim::the_platform();
  cf_value* dictionary = tmxsim::find_live(state, theDict, cf_kind::dictionary);
  if (can_change(state, dictionary))
    put(state, *dictionary, key, value, tmxsim::put_mode::add_if_absent);
  if (state.log.on())
    log_line(state.log, "CFDictionaryAddValue")
        .word(tmxsim::cf_name(state.cf, theDict))
        .word(tmxsim::cf_contents(state.cf, key))
        .word(tmxsim::cf_name(state.cf, value));
}

}  // extern "C"
