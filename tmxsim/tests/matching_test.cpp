// Registry lookups: which entry a matching dictionary selects.

#include <IOKit/hid/IOHIDDevice.h>

#include "sim_test_support.h"

namespace {

constexpr std::string_view registry = R"({
  "services": [
    {"name": "ZOL_alpha", "properties": {"tag": "alpha", "service_id": 7},
     "children": [
       {"name": "ZOL_shared", "class": "Other", "properties": {"tag": "child"}},
       {"name": "ZOL_second_child", "properties": {"tag": "second child"}}]},
    {"name": "ZOL_shared", "properties": {"tag": "shared", "service_id": 8}},
    {"name": "Sync", "class": "CorvelTMXTimesync", "properties": {"tag": "sync"}}
  ],
  "hid_devices": [
    {"usage_page": 65280, "usage": 16, "reports": {"1": {"reply": "10"}}},
    {"usage_page": 65280, "usage": 32, "reports": {"1": {"reply": "20"}}}
  ]
})";

// The tag of the entry found, "none" when nothing matched; the handle is released.
std::string found(CFDictionaryRef matching) {
  const io_service_t service = lookup(matching);
  if (service == 0) return "none";
  const std::string tag = text_property(service, "tag");
  IOObjectRelease(service);
  return tag;
}

// The first byte of report 1 of the HID device with this usage pair, or -1.
int hid_device_with(int page, int usage) {
  const io_service_t service = lookup(hid_matching(page, usage));
  IOHIDDeviceRef device = IOHIDDeviceCreate(kCFAllocatorDefault, service);
  int first = -1;
  std::uint8_t report[4] = {};
  CFIndex size = sizeof report;
  if (device != nullptr && IOHIDDeviceOpen(device, 0) == 0 &&
      IOHIDDeviceGetReport(device, kIOHIDReportTypeFeature, 1, report, &size) == 0)
    first = report[0];
  if (device != nullptr) {
    IOHIDDeviceClose(device, 0);
    CFRelease(device);
  }
  if (service != 0) IOObjectRelease(service);
  return first;
}

TEST(matching, each_dictionary_selects_the_first_entry_it_matches) {
  use_phone(registry);
  const std::pair<CFDictionaryRef, const char*> lookups[] = {
      {IOServiceMatching("CorvelTMXTimesync"), "sync"},
      {IOServiceMatching("NoSuchClass"), "none"},
      // The child named ZOL_shared has another class, so the entry after it matches.
      {interface_named("ZOL_shared"), "shared"},
      {interface_named("ZOL_missing"), "none"},
      // The registry holds 64-bit numbers; the request a 32-bit one.
      {interface_with_id(8), "shared"},
      {interface_with_id(7), "alpha"},
      {interface_with_id(9), "none"},
      // A name alone searches depth first: each entry, its children, the next entry.
      {IOServiceNameMatching("ZOL_shared"), "child"},
      {IOServiceNameMatching("ZOL_second_child"), "second child"},
      {IOServiceNameMatching("Sync"), "sync"},
  };
  for (const auto& [matching, tag] : lookups) EXPECT_EQ(found(matching), tag);
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(matching, usage_pairs_select_the_hid_device) {
  use_phone(registry);
  EXPECT_EQ(hid_device_with(0xff00, 0x20), 0x20);
  EXPECT_EQ(hid_device_with(0xff00, 0x10), 0x10);
  EXPECT_EQ(hid_device_with(0xff00, 0x30), -1);
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(matching, first_child_in_the_service_plane) {
  use_phone(registry);
  const io_service_t alpha = lookup(IOServiceNameMatching("ZOL_alpha"));
  io_registry_entry_t child = 0;
  ASSERT_EQ(IORegistryEntryGetChildEntry(alpha, "IOService", &child), KERN_SUCCESS);
  EXPECT_EQ(text_property(child, "tag"), "child");

  io_registry_entry_t none = 1;
  EXPECT_EQ(IORegistryEntryGetChildEntry(child, "IOService", &none),
            static_cast<kern_return_t>(0xe00002f0));
  EXPECT_EQ(none, 0u);
  IOObjectRelease(child);
  IOObjectRelease(alpha);
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(matching, every_lookup_is_a_new_handle_to_release) {
  use_phone(registry);
  const io_service_t first = lookup(IOServiceNameMatching("Sync"));
  const io_service_t second = lookup(IOServiceNameMatching("Sync"));
  EXPECT_NE(first, 0u);
  EXPECT_NE(first, second);
  EXPECT_EQ(audit_text(), "io_objects=2 connections=0 cf_objects=0 misuse=0");
  IOObjectRelease(first);
  IOObjectRelease(second);
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(matching, a_machine_without_coprocessor_matches_nothing) {
  use_phone("{}");
  EXPECT_EQ(found(IOServiceMatching("CorvelTMXInterface")), "none");
  EXPECT_EQ(hid_device_with(0xff00, 0x20), -1);
  EXPECT_EQ(audit_text(), all_clear);
}

}  // namespace
