// IOKit: which registry entry a matching dictionary selects, what calls on
// connections and HID devices answer, and handles used after they end.

#include <IOKit/hid/IOHIDDevice.h>

#include <algorithm>
#include <optional>

#include "sim_test_support.h"

namespace {

// The tag of `entry`, "none" for no entry; the handle is released.
std::string tag_of(io_registry_entry_t entry) {
  if (entry == 0) return "none";
  CFTypeRef tag = IORegistryEntryCreateCFProperty(entry, CFSTR("tag"), kCFAllocatorDefault, 0);
  char text[32] = "no tag";
  CFStringGetCString(static_cast<CFStringRef>(tag), text, sizeof text, kCFStringEncodingUTF8);
  CFRelease(tag);
  IOObjectRelease(entry);
  return text;
}

// What opening the HID device with this usage pair answers; nothing when none matched.
std::optional<IOReturn> hid_open(int page, int usage) {
  const io_service_t service = lookup(hid_matching(page, usage));
  if (service == 0) return std::nullopt;
  IOHIDDeviceRef device = IOHIDDeviceCreate(kCFAllocatorDefault, service);
  const IOReturn result = IOHIDDeviceOpen(device, 0);
  IOHIDDeviceClose(device, 0);  // allowed after a failed open too
  CFRelease(device);
  IOObjectRelease(service);
  return result;
}

TEST(matching, each_dictionary_selects_the_first_entry_it_matches) {
  use_phone(test_phone);
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
  for (const auto& [matching, tag] : lookups) EXPECT_EQ(tag_of(lookup(matching)), tag);
  // Usage pairs select the HID device.
  EXPECT_EQ(hid_open(0xff00, 0x10), static_cast<IOReturn>(0xe00002c5));
  EXPECT_EQ(hid_open(0xff00, 0x20), kIOReturnSuccess);
  EXPECT_EQ(hid_open(0xff00, 0x30), std::nullopt);
  EXPECT_EQ(audit_text(), all_clear);

  // The first child in the service plane; each lookup is a new handle to release.
  const io_service_t alpha = lookup(IOServiceNameMatching("ZOL_alpha"));
  const io_service_t again = lookup(IOServiceNameMatching("ZOL_alpha"));
  EXPECT_NE(again, alpha);
  io_registry_entry_t child = 0;
  ASSERT_EQ(IORegistryEntryGetChildEntry(alpha, "IOService", &child), KERN_SUCCESS);
  io_registry_entry_t none = 1;
  EXPECT_EQ(IORegistryEntryGetChildEntry(child, "IOService", &none),
            static_cast<kern_return_t>(0xe00002f0));
  EXPECT_EQ(none, 0u);
  EXPECT_EQ(audit_text(), "io_objects=3 connections=0 cf_objects=0 misuse=0");
  EXPECT_EQ(tag_of(child), "child");
  for (const io_object_t entry : {alpha, again}) IOObjectRelease(entry);
  EXPECT_EQ(audit_text(), all_clear);

  // An empty description, or a rejected one, leaves the phone without a coprocessor.
  for (const char* json : {"{}", R"({"services": [{"name": "ZOL_x", "class": 1}]})"}) {
    use_phone(test_phone);
    const bool valid = std::string_view(json) == "{}";
    EXPECT_EQ(tmxsim::load_description(json, "test.json").empty(), valid);
    EXPECT_EQ(tag_of(lookup(IOServiceMatching("CorvelTMXInterface"))), "none");
    EXPECT_EQ(tag_of(lookup(IOServiceNameMatching("ZOL_x"))), "none");
    EXPECT_EQ(hid_open(0xff00, 0x20), std::nullopt);
    EXPECT_EQ(audit_text(), all_clear);
  }
}

using bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t untouched = 0xee;

// A connection to the service `name`; the service's handle stays held.
io_connect_t open_service(const char* name) {
  io_connect_t handle = 0;
  IOServiceOpen(lookup(IOServiceNameMatching(name)), mach_task_self(), 0, &handle);
  return handle;
}

// What a call answered, and left in a buffer of at least 16 bytes.
struct answer {
  std::uint32_t result;
  std::size_t size;
  bytes buffer;
};

answer ask(io_connect_t handle, std::uint32_t selector, std::uint64_t scalar,
           std::size_t capacity) {
  answer out{0, capacity, bytes(std::max<std::size_t>(capacity, 16), untouched)};
  out.result = static_cast<std::uint32_t>(IOConnectCallMethod(
      handle, selector, &scalar, 1, nullptr, 0, nullptr, nullptr, out.buffer.data(), &out.size));
  return out;
}

// Delivery: min(reply, capacity) bytes on success, nothing on failure; the
// caller's bytes past them stay as they were.
void expect_delivery(const answer& reply, answer expected) {
  expected.buffer.resize(reply.buffer.size(), untouched);
  EXPECT_EQ(reply.result, expected.result);
  EXPECT_EQ(reply.size, expected.size);
  EXPECT_EQ(reply.buffer, expected.buffer);
}

// A single answer repeats; a sequence is consumed, then answers with nothing
// until a reset. Feature reports follow the same delivery.
TEST(answers, each_call_delivers_what_its_answer_and_capacity_allow) {
  use_phone(test_phone);
  const io_connect_t dev = open_service("ZOL_dev");
  const io_service_t service = lookup(hid_matching(1, 2));
  IOHIDDeviceRef device = IOHIDDeviceCreate(kCFAllocatorDefault, service);
  const auto report = [device](IOHIDReportType type, CFIndex id, CFIndex capacity) {
    answer out{0, 0, bytes(16, untouched)};
    out.result = static_cast<std::uint32_t>(
        IOHIDDeviceGetReport(device, type, id, out.buffer.data(), &capacity));
    out.size = static_cast<std::size_t>(capacity);
    return out;
  };
  expect_delivery(report(kIOHIDReportTypeFeature, 0xe0, 11), {0xe00002cd, 11, {}});  // not open
  ASSERT_EQ(IOHIDDeviceOpen(device, 0), kIOReturnSuccess);
  // The calls, made in order, and what each should answer.
  const std::pair<answer, answer> calls[] = {
      {ask(dev, 2, 215, 16), {0, 6, {1, 2, 3, 4, 5, 6}}},
      {ask(dev, 2, 215, 4), {0, 4, {1, 2, 3, 4}}},
      {ask(dev, 2, 215, 0), {0, 0, {}}},
      {ask(dev, 2, 215, 16), {0, 6, {1, 2, 3, 4, 5, 6}}},
      {ask(dev, 2, 208, 12), {0xe00002c2, 12, {}}},
      {ask(dev, 2, 216, 12), {0xe00002c7, 12, {}}},
      {ask(dev, 2, 209, 16), {0, 9, {0x02, 0x01, 'a', 'b', 0, 0x0a, 0x0b, 'd', 0}}},
      {ask(dev, 2, 209, 16), {0xe00002d6, 16, {}}},
      {ask(dev, 2, 209, 16), {0, 1, {9}}},
      {ask(dev, 2, 209, 16), {0, 0, {}}},
      {ask(dev, 2, 209, 16), {0, 0, {}}},
      // Other selectors answer from "methods", whatever the scalar.
      {ask(dev, 9, 215, 4), {0, 2, {0xaa, 0xbb}}},
      {ask(dev, 5, 215, 4), {0xe00002c7, 4, {}}},
      {report(kIOHIDReportTypeFeature, 0xe0, 10),
       {0, 10, {0xff, 0xff, 0xff, 0xff, 0xfe, 0xff, 0xff, 0xff, 1, 0}}},
      {report(kIOHIDReportTypeFeature, 0xb4, 11), {0xe00002d8, 11, {}}},
      {report(kIOHIDReportTypeFeature, 0xe1, 11), {0xe00002c7, 11, {}}},
      {report(kIOHIDReportTypeInput, 0xe0, 11), {0xe00002c7, 11, {}}},
  };
  for (std::size_t call = 0; call < std::size(calls); ++call) {
    SCOPED_TRACE(testing::Message() << "call " << call);
    expect_delivery(calls[call].first, calls[call].second);
  }
  IOHIDDeviceClose(device, 0);
  CFRelease(device);
  IOObjectRelease(service);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=1 cf_objects=0 misuse=0");
  tmxsim::reset_state();
  EXPECT_EQ(ask(open_service("ZOL_dev"), 2, 209, 16).size, 9u);
}

// Opening answers the described result. Calls on 0 are refused; on an ended
// connection or handle, refused and counted. A reset forgets all handed out.
TEST(connections, opening_and_calls_after_the_end) {
  use_phone(test_phone);
  for (const auto& [name, result] : {std::pair{"ZOL_refuses", 0xe00002c1u}, {"ZOL_null", 0u}}) {
    const io_service_t service = lookup(IOServiceNameMatching(name));
    io_connect_t handle = 1;
    EXPECT_EQ(IOServiceOpen(service, mach_task_self(), 0, &handle),
              static_cast<kern_return_t>(result));
    EXPECT_EQ(handle, 0u);
    IOObjectRelease(service);
  }
  const io_service_t service = lookup(IOServiceNameMatching("ZOL_dev"));
  io_connect_t dev = 0;
  EXPECT_EQ(IOServiceOpen(service, mach_task_self(), 0, &dev), KERN_SUCCESS);
  // Nothing was mapped: unmapping fails, quietly.
  EXPECT_NE(IOConnectUnmapMemory(dev, 0, mach_task_self(), 0x10000), KERN_SUCCESS);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=1 cf_objects=0 misuse=0");
  EXPECT_EQ(IOServiceClose(dev), KERN_SUCCESS);
  for (const io_connect_t ended : {io_connect_t{0}, dev})
    expect_delivery(ask(ended, 2, 215, 4), {0x10000003, 4, {}});
  EXPECT_EQ(IOServiceClose(dev), static_cast<kern_return_t>(0x10000003));
  EXPECT_EQ(IOObjectRelease(service), KERN_SUCCESS);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=2");
  EXPECT_NE(IOObjectRelease(service), KERN_SUCCESS);
  EXPECT_NE(IOObjectRelease(0x7777), KERN_SUCCESS);
  EXPECT_NE(IOServiceOpen(service, mach_task_self(), 0, &dev), KERN_SUCCESS);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=5");

  const io_connect_t again = open_service("ZOL_dev");
  make_string("left behind");
  EXPECT_EQ(audit_text(), "io_objects=1 connections=1 cf_objects=1 misuse=5");
  tmxsim::reset_state();
  EXPECT_EQ(audit_text(), all_clear);
  EXPECT_EQ(IOServiceClose(again), static_cast<kern_return_t>(0x10000003));
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=1");
}

// The built-in default phone answers the button statistics request.
TEST(answers, the_default_phone_gives_statistics_of_zol_button_by_name_and_by_id) {
  tmxsim::load_default_description();
  const io_service_t named = lookup(interface_named("ZOL_zol-button"));
  CFTypeRef id = IORegistryEntryCreateCFProperty(named, CFSTR("service_id"), nullptr, 0);
  int number = -1;
  ASSERT_TRUE(CFNumberGetValue(static_cast<CFNumberRef>(id), kCFNumberIntType, &number));
  const io_service_t numbered = lookup(interface_with_id(number));
  CFTypeRef same = IORegistryEntryCreateCFProperty(numbered, CFSTR("service_id"), nullptr, 0);
  EXPECT_TRUE(CFEqual(same, id));
  io_connect_t connection = 0;
  ASSERT_EQ(IOServiceOpen(numbered, mach_task_self(), 0, &connection), KERN_SUCCESS);
  const answer record = ask(connection, 2, 215, 4096);
  EXPECT_EQ(record.result, 0u);
  EXPECT_GE(record.size, 282u);  // a whole statistics record
  IOServiceClose(connection);
  for (CFTypeRef value : {id, same}) CFRelease(value);
  for (const io_service_t entry : {numbered, named}) IOObjectRelease(entry);
  EXPECT_EQ(audit_text(), all_clear);
}

}  // namespace
