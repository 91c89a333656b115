#pragma once

// Helpers shared by the platform's tests.

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <gtest/gtest.h>
#include <tmxsim/control.h>

#include <cstdint>
#include <vector>
#include <string>
#include <string_view>

// Makes `json` the phone, with nothing handed out yet.
inline void use_phone(std::string_view json) {
  const std::string error = tmxsim::load_description(json, "test phone");
  if (!error.empty()) ADD_FAILURE() << error;
}

// The audit as its line shows it.
inline std::string audit_text() {
  const tmxsim::audit_counts counts = tmxsim::audit();
  return "io_objects=" + std::to_string(counts.io_objects) +
         " connections=" + std::to_string(counts.connections) +
         " cf_objects=" + std::to_string(counts.cf_objects) +
         " misuse=" + std::to_string(counts.misuse);
}

inline constexpr const char* all_clear = "io_objects=0 connections=0 cf_objects=0 misuse=0";

inline io_service_t lookup(CFDictionaryRef matching) {
  return IOServiceGetMatchingService(kIOMainPortDefault, matching);
}

inline CFStringRef make_string(const char* text) {
  return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
}

inline CFNumberRef make_int(int value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value);
}

// `matching` with `key` set to `value`; the value is released.
inline CFMutableDictionaryRef with(CFMutableDictionaryRef matching, const char* key,
                                   CFTypeRef value) {
  CFStringRef name = make_string(key);
  CFDictionarySetValue(matching, name, value);
  CFRelease(name);
  CFRelease(value);
  return matching;
}

// The string property `key` of a registry entry, "" when there is none.
inline std::string text_property(io_registry_entry_t entry, const char* key) {
  CFStringRef name = make_string(key);
  CFTypeRef value = IORegistryEntryCreateCFProperty(entry, name, kCFAllocatorDefault, 0);
  CFRelease(name);
  std::string text;
  if (value != nullptr && CFGetTypeID(value) == CFStringGetTypeID())
    text = CFStringGetCStringPtr(static_cast<CFStringRef>(value), kCFStringEncodingUTF8);
  if (value != nullptr) CFRelease(value);
  return text;
}

inline CFMutableDictionaryRef interface_named(const char* name) {
  return with(IOServiceMatching("CorvelTMXInterface"), "IONameMatch", make_string(name));
}

inline CFMutableDictionaryRef interface_with_id(int id) {
  const void* keys[] = {CFSTR("service_id")};
  const void* values[] = {make_int(id)};
  CFDictionaryRef wanted = CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                                              &kCFTypeDictionaryKeyCallBacks,
                                              &kCFTypeDictionaryValueCallBacks);
  CFRelease(values[0]);
  return with(IOServiceMatching("CorvelTMXInterface"), "IOPropertyMatch", wanted);
}

// The matching dictionary for the HID device with this usage pair.
inline CFMutableDictionaryRef hid_matching(int page, int usage) {
  const void* keys[] = {CFSTR("DeviceUsagePage"), CFSTR("DeviceUsage")};
  const void* values[] = {make_int(page), make_int(usage)};
  CFDictionaryRef pair = CFDictionaryCreate(kCFAllocatorDefault, keys, values, 2,
                                            &kCFTypeDictionaryKeyCallBacks,
                                            &kCFTypeDictionaryValueCallBacks);
  for (const void* value : values) CFRelease(value);
  CFArrayRef pairs = CFArrayCreate(kCFAllocatorDefault, reinterpret_cast<const void**>(&pair),
                                   1, &kCFTypeArrayCallBacks);
  CFRelease(pair);
  return with(IOServiceMatching("IOHIDDevice"), "DeviceUsagePairs", pairs);
}

// Selector 2 with one command.
inline kern_return_t command(io_connect_t connection, std::uint64_t number, void* buffer,
                             std::size_t* size) {
  return IOConnectCallMethod(connection, 2, &number, 1, nullptr, 0, nullptr, nullptr,
                             buffer, size);
}
