// IOKit: matching dictionaries, registry lookups, properties and handles.

#include <IOKit/IOKitLib.h>

#include <cstring>
#include <string>

#include "cf_describe.h"
#include "cf_values.h"
#include "call_log.h"
#include "platform.h"
#include "utf8.h"

using tmxsim::cf_kind;
using tmxsim::cf_value;
using tmxsim::log_line;
using tmxsim::platform;

namespace {

// The calls the tool makes for every record: see quiet_platform().

// { key: name }, as the real calls build it; `key_constant` keeps the
// constant for `key` once made.
[[gnu::always_inline]] inline cf_value* new_matching(platform& state, const char* key,
                                                     cf_value*& key_constant,
                                                     const char* name) {
  if (name == nullptr) return nullptr;
  cf_value& dictionary = state.cf.create(cf_kind::dictionary, true);
  dictionary.is_mutable = true;
  dictionary.retains_keys = true;
  dictionary.retains_values = true;
  dictionary.keys_by_value = true;
  cf_value& text = state.cf.create(cf_kind::string, false);
  text.text = name;
  text.ascii = tmxsim::is_ascii(text.text);
  if (key_constant == nullptr) key_constant = &state.cf.constant_string(key);
  dictionary.entries.emplace_back(state.cf.ref(*key_constant), state.cf.ref(text));
  return &dictionary;
}

CFMutableDictionaryRef matching_and_log(platform& state, const char* call,
                                        const char* key, cf_value*& key_constant,
                                        const char* name) {
  cf_value* dictionary = new_matching(state, key, key_constant, name);
  if (state.log.on())
    log_line(state.log, call).quoted(name).returns().word(tmxsim::cf_name(state.cf, dictionary));
  return reinterpret_cast<CFMutableDictionaryRef>(dictionary);
}

[[gnu::noinline]] CFMutableDictionaryRef service_matching_and_log(const char* name) {
  platform& state = tmxsim::the_platform();
  return matching_and_log(state, "IOServiceMatching", kIOProviderClassKey,
                          state.phone.class_key, name);
}

[[gnu::always_inline]] inline kern_return_t release_object(platform& state,
                                                           io_object_t object) {
  // A connection released this way is closed, as the kernel closes a
  // connection whose last port right goes.
  if (state.handles.remove(object)) return KERN_SUCCESS;
  if (object != 0) tmxsim::count_misuse(state, "not a live handle");
  return kIOReturnBadArgument;
}

[[gnu::noinline]] kern_return_t release_object_and_log(io_object_t object) {
  platform& state = tmxsim::the_platform();
  const kern_return_t result = release_object(state, object);
  if (state.log.on())
    log_line(state.log, "IOObjectRelease").hex(object).returns().hex(static_cast<std::uint32_t>(result));
  return result;
}

[[gnu::always_inline]] inline io_service_t matching_service(platform& state,
                                                            CFDictionaryRef matching) {
  cf_value* dictionary = tmxsim::find_live(state, matching);
  if (dictionary == nullptr) return 0;
  if (dictionary->owned == 0) {
    tmxsim::count_misuse(state, "matching dictionary not owned");
    return 0;
  }
  io_service_t service = 0;
  if (dictionary->kind == cf_kind::dictionary)
    if (const auto entry = tmxsim::first_match(state.phone, state.cf, *dictionary))
      service = state.handles.add(tmxsim::handle_kind::entry, *entry);
  // Consumed whether or not anything matched.
  state.cf.release_owned(*dictionary);
  return service;
}

[[gnu::noinline]] io_service_t matching_service_and_log(CFDictionaryRef matching) {
  platform& state = tmxsim::the_platform();
  if (!state.log.on()) return matching_service(state, matching);
  const std::string shown = tmxsim::cf_contents(state.cf, matching);
  const io_service_t service = matching_service(state, matching);
  log_line(state.log, "IOServiceGetMatchingService").word(shown).returns().hex(service);
  return service;
}

[[gnu::always_inline]] inline CFTypeRef property_of(platform& state, io_registry_entry_t entry,
                                                    CFStringRef key) {
  const tmxsim::handle_slot* slot = tmxsim::find_entry(state, entry);
  const cf_value* name = tmxsim::find_live(state, key, cf_kind::string);
  if (slot == nullptr || slot->entry.hid || name == nullptr) return nullptr;
  const tmxsim::cf_entry* property = tmxsim::dictionary_entry(
      state.cf, *state.phone.properties[slot->entry.index], key);
  // The registry's own value, with a reference the caller now owns.
  cf_value* value = property != nullptr ? state.cf.find(property->second) : nullptr;
  if (value == nullptr) return nullptr;
  state.cf.retain_owned(*value);
  return property->second;
}

[[gnu::noinline]] CFTypeRef property_and_log(io_registry_entry_t entry, CFStringRef key) {
  platform& state = tmxsim::the_platform();
  const CFTypeRef result = property_of(state, entry, key);
  if (state.log.on())
    log_line(state.log, "IORegistryEntryCreateCFProperty")
        .hex(entry)
        .word(tmxsim::cf_contents(state.cf, key))
        .returns()
        .word(tmxsim::cf_name(state.cf, result));
  return result;
}

}  // namespace

extern "C" {

const mach_port_t kIOMainPortDefault = MACH_PORT_NULL;

kern_return_t IOObjectRelease(io_object_t object) {
  if (platform* state = tmxsim::quiet_platform()) return release_object(*state, object);
  return release_object_and_log(object);
}

CFMutableDictionaryRef IOServiceMatching(const char* name) {
  if (platform* state = tmxsim::quiet_platform())
    return reinterpret_cast<CFMutableDictionaryRef>(
        new_matching(*state, kIOProviderClassKey, state->phone.class_key, name));
  return service_matching_and_log(name);
}

CFMutableDictionaryRef IOServiceNameMatching(const char* name) {
  platform& state = tmxsim::the_platform();
  return matching_and_log(state, "IOServiceNameMatching", kIONameMatchKey,
                          state.phone.name_key, name);
}

io_service_t IOServiceGetMatchingService(mach_port_t, CFDictionaryRef matching) {
  if (platform* state = tmxsim::quiet_platform()) return matching_service(*state, matching);
  return matching_service_and_log(matching);
}

kern_return_t IORegistryEntryGetChildEntry(io_registry_entry_t entry, const io_name_t plane,
                                           io_registry_entry_t* child) {
  platform& state = tmxsim::the_platform();
  kern_return_t result = kIOReturnBadArgument;
  io_registry_entry_t found = 0;
  const tmxsim::handle_slot* slot = tmxsim::find_entry(state, entry);
  if (slot != nullptr && plane != nullptr && child != nullptr) {
    result = kIOReturnNotFound;
    const bool service_plane = std::strcmp(plane, kIOServicePlane) == 0;
    if (service_plane && !slot->entry.hid) {
      const std::size_t first =
          state.phone.model.services[slot->entry.index].first_child;
      if (first != tmxsim::service_description::no_child) {
        found = state.handles.add(tmxsim::handle_kind::entry, {false, first});
        result = found != 0 ? KERN_SUCCESS : kIOReturnNoResources;
      }
    }
  }
  if (child != nullptr) *child = found;
  if (state.log.on())
    log_line(state.log, "IORegistryEntryGetChildEntry")
        .hex(entry)
        .quoted(plane)
        .returns()
        .hex(static_cast<std::uint32_t>(result))
        .hex(found);
  return result;
}

CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key,
                                          CFAllocatorRef, IOOptionBits) {
  if (platform* state = tmxsim::quiet_platform()) return property_of(*state, entry, key);
  return property_and_log(entry, key);
}

}  // extern "C"
