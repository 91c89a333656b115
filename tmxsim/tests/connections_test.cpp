// Connections and handles used after they end.

#include <IOKit/hid/IOHIDDevice.h>

#include "sim_test_support.h"

namespace {

constexpr std::string_view phone = R"({
  "services": [{"name": "ZOL_dev", "commands": {"215": {"reply": "0102"}}}],
  "hid_devices": [{"usage_page": 1, "usage": 2, "open_result": "0xe00002c5"}]
})";

constexpr auto invalid_destination = static_cast<kern_return_t>(0x10000003);

io_connect_t open_dev(io_service_t& service) {
  service = lookup(IOServiceNameMatching("ZOL_dev"));
  io_connect_t handle = 0;
  EXPECT_EQ(IOServiceOpen(service, mach_task_self(), 0, &handle), KERN_SUCCESS);
  return handle;
}

TEST(connections, zero_and_closed_connections_are_refused_closed_ones_counted) {
  use_phone(phone);
  io_service_t service = 0;
  const io_connect_t handle = open_dev(service);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=1 cf_objects=0 misuse=0");
  EXPECT_EQ(IOServiceClose(handle), KERN_SUCCESS);
  for (const io_connect_t refused : {io_connect_t{0}, handle}) {
    std::uint8_t buffer[4] = {7, 7, 7, 7};
    std::size_t size = sizeof buffer;
    EXPECT_EQ(command(refused, 215, buffer, &size), invalid_destination);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(buffer[0], 7);
  }
  EXPECT_EQ(IOServiceClose(handle), invalid_destination);
  IOObjectRelease(service);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=2");
}

TEST(connections, unmapping_what_was_never_mapped_fails_quietly) {
  use_phone(phone);
  io_service_t service = 0;
  const io_connect_t handle = open_dev(service);
  EXPECT_NE(IOConnectUnmapMemory(handle, 0, mach_task_self(), 0x10000), KERN_SUCCESS);
  IOServiceClose(handle);
  IOObjectRelease(service);
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(connections, released_and_unknown_handles_are_counted) {
  use_phone(phone);
  const io_service_t service = lookup(IOServiceNameMatching("ZOL_dev"));
  EXPECT_EQ(IOObjectRelease(service), KERN_SUCCESS);
  EXPECT_NE(IOObjectRelease(service), KERN_SUCCESS);
  EXPECT_NE(IOObjectRelease(0x7777), KERN_SUCCESS);
  io_connect_t handle = 0;
  EXPECT_NE(IOServiceOpen(service, mach_task_self(), 0, &handle), KERN_SUCCESS);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=3");
}

TEST(connections, closing_a_hid_device_that_failed_to_open_is_allowed) {
  use_phone(phone);
  const io_service_t service = lookup(IOServiceMatching("IOHIDDevice"));
  IOHIDDeviceRef device = IOHIDDeviceCreate(kCFAllocatorDefault, service);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(IOHIDDeviceOpen(device, 0), static_cast<IOReturn>(0xe00002c5));
  IOHIDDeviceClose(device, 0);
  CFRelease(device);
  IOObjectRelease(service);
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(connections, reset_forgets_what_was_handed_out) {
  use_phone(phone);
  io_service_t service = 0;
  const io_connect_t handle = open_dev(service);
  make_string("left behind");
  EXPECT_EQ(audit_text(), "io_objects=1 connections=1 cf_objects=1 misuse=0");
  tmxsim::reset_state();
  EXPECT_EQ(audit_text(), all_clear);
  EXPECT_EQ(IOServiceClose(handle), invalid_destination);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=1");
}

}  // namespace
