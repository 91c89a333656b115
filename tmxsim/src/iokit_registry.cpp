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

// { key: name }, as the real calls build it.
CFMutableDictionaryRef new_matching(const char* call, const char* key, const char* name) {
  platform& state = tmxsim::the_platform();
  cf_value* dictionary = nullptr;
  if (name != nullptr) {
    dictionary = &state.cf.create(cf_kind::dictionary, true);
    dictionary->is_mutable = true;
    dictionary->retains_keys = true;
    dictionary->retains_values = true;
    dictionary->keys_by_value = true;
    cf_value& text = state.cf.create(cf_kind::string, false);
    text.text = name;
    text.ascii = tmxsim::is_ascii(text.text);
    dictionary->entries.emplace_back(state.cf.ref(state.cf.constant_string(key)),
                                     state.cf.ref(text));
  }
  if (state.log.on())
    log_line(state.log, call).quoted(name).returns().word(tmxsim::cf_name(state.cf, dictionary));
  return reinterpret_cast<CFMutableDictionaryRef>(dictionary);
}

}  // namespace

extern "C" {

const mach_port_t kIOMainPortDefault = MACH_PORT_NULL;

kern_return_t IOObjectRelease(io_object_t object) {
  platform& state = tmxsim::the_platform();
  kern_return_t result = KERN_SUCCESS;
  // A connection released this way is closed, as the kernel closes a
  // connection whose last port right goes.
  if (state.handles.find(object) != nullptr) {
    state.handles.remove(object);
  } else {
    result = kIOReturnBadArgument;
    if (object != 0) tmxsim::count_misuse(state, "not a live handle");
  }
  if (state.log.on())
    log_line(state.log, "IOObjectRelease").hex(object).returns().hex(static_cast<std::uint32_t>(result));
  return result;
}

CFMutableDictionaryRef IOServiceMatching(const char* name) {
  return new_matching("IOServiceMatching", kIOProviderClassKey, name);
}

CFMutableDictionaryRef IOServiceNameMatching(const char* name) {
  return new_matching("IOServiceNameMatching", kIONameMatchKey, name);
}

io_service_t IOServiceGetMatchingService(mach_port_t, CFDictionaryRef matching) {
  platform& state = tmxsim::the_platform();
  const std::string shown = state.log.on() ? tmxsim::cf_contents(state.cf, matching) : "";
  io_service_t service = 0;
  cf_value* dictionary = tmxsim::find_live(state, matching);
  if (dictionary != nullptr && dictionary->owned == 0) {
    tmxsim::count_misuse(state, "matching dictionary not owned");
  } else if (dictionary != nullptr) {
    if (dictionary->kind == cf_kind::dictionary)
      if (const auto entry = tmxsim::first_match(state.phone, state.cf, *dictionary))
        service = state.handles.add(tmxsim::handle_kind::entry, *entry);
    // Consumed whether or not anything matched.
    state.cf.release_owned(*dictionary);
  }
  if (state.log.on())
    log_line(state.log, "IOServiceGetMatchingService").word(shown).returns().hex(service);
  return service;
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
  platform& state = tmxsim::the_platform();
  const void* result = nullptr;
  const tmxsim::handle_slot* slot = tmxsim::find_entry(state, entry);
  const cf_value* name = tmxsim::find_live(state, key, cf_kind::string);
  if (slot != nullptr && !slot->entry.hid && name != nullptr) {
    const tmxsim::cf_entry* property = tmxsim::dictionary_entry(
        state.cf, *state.phone.properties[slot->entry.index], key);
    // The registry's own value, with a reference the caller now owns.
    if (cf_value* value = property != nullptr ? state.cf.find(property->second) : nullptr) {
      state.cf.retain_owned(*value);
      result = property->second;
    }
  }
  if (state.log.on())
    log_line(state.log, "IORegistryEntryCreateCFProperty")
        .hex(entry)
        .word(tmxsim::cf_contents(state.cf, key))
        .returns()
        .word(tmxsim::cf_name(state.cf, result));
  return result;
}

}  // extern "C"
