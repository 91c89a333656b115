#pragma once

// Helpers shared by the platform's tests.

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <gtest/gtest.h>
#include <tmxsim/control.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The phone most tests use.
inline constexpr std::string_view test_phone = R"({
  "services": [
    {"name": "ZOL_alpha", "properties": {"tag": "alpha", "service_id": 7}, "children": [
       {"name": "ZOL_shared", "class": "Other", "properties": {"tag": "child"}},
       {"name": "ZOL_second_child", "properties": {"tag": "second child"}}]},
    {"name": "ZOL_shared", "properties": {"tag": "shared", "service_id": 8}},
    {"name": "Sync", "class": "CorvelTMXTimesync",
     "properties": {"tag": "sync", "timesync": {"tmx": 5, "calendar": 6}}},
    {"name": "ZOL_dev", "methods": {"9": [{"reply": "aa bb"}]}, "commands": {
       "215": {"reply": "01 02 03 04 05 06"},
       "209": [{"fields": [{"u16": 258}, {"text": "abc", "size": 2}, {"zeros": 1},
                           {"hex": "0a 0b"}, {"text": "d", "size": 2}]},
               {"result": "0xe00002d6", "reply": "ff"}, {"reply": "09"}],
       "208": {"result": 3758097090, "reply": "ff"}}},
    {"name": "ZOL_refuses", "open_result": "0xe00002c1"},
    {"name": "ZOL_null", "null_connection": true}],
  "hid_devices": [
    {"usage_page": 1, "usage": 2, "reports": {
       "224": {"fields": [{"u32": 4294967295}, {"i32": -2}, {"u64": 1}]},
       "180": {"result": "0xe00002d8"}}},
    {"usage_page": 65280, "usage": 16, "open_result": "0xe00002c5"},
    {"usage_page": 65280, "usage": 32}]
})";

// Makes `json` the phone, with nothing handed out yet.
inline void use_phone(std::string_view json) {
  EXPECT_EQ(tmxsim::load_description(json, "test phone"), "");
}

// The audit as its line shows it.
inline std::string audit_text() {
  const auto [io_objects, connections, cf_objects, misuse] = tmxsim::audit();
  return "io_objects=" + std::to_string(io_objects) +
         " connections=" + std::to_string(connections) +
         " cf_objects=" + std::to_string(cf_objects) + " misuse=" + std::to_string(misuse);
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

// A dictionary of `keys` and `values`; the values are released.
template <std::size_t count>
CFDictionaryRef dictionary(const void* (&&keys)[count], const void* (&&values)[count]) {
  CFDictionaryRef made =
      CFDictionaryCreate(kCFAllocatorDefault, keys, values, count, &kCFTypeDictionaryKeyCallBacks,
                         &kCFTypeDictionaryValueCallBacks);
  for (const void* value : values) CFRelease(value);
  return made;
}

inline CFMutableDictionaryRef interface_named(const char* name) {
  return with(IOServiceMatching("CorvelTMXInterface"), "IONameMatch", make_string(name));
}

inline CFMutableDictionaryRef interface_with_id(int id) {
  return with(IOServiceMatching("CorvelTMXInterface"), "IOPropertyMatch",
              dictionary({CFSTR("service_id")}, {make_int(id)}));
}

// The matching dictionary for the HID device with this usage pair.
inline CFMutableDictionaryRef hid_matching(int page, int usage) {
  const void* pair = dictionary({CFSTR("DeviceUsagePage"), CFSTR("DeviceUsage")},
                                {make_int(page), make_int(usage)});
  CFArrayRef pairs = CFArrayCreate(kCFAllocatorDefault, &pair, 1, &kCFTypeArrayCallBacks);
  CFRelease(pair);
  return with(IOServiceMatching("IOHIDDevice"), "DeviceUsagePairs", pairs);
}
