// What calls answer: single answers, sequences, results and delivery.

#include <IOKit/hid/IOHIDDevice.h>

#include <array>

#include "sim_test_support.h"

namespace {

constexpr std::string_view phone = R"({
  "services": [
    {"name": "ZOL_dev", "commands": {
       "215": {"reply": "01 02 03 04 05 06"},
       "209": [{"fields": [{"u16": 258}, {"text": "abc", "size": 2}, {"zeros": 1},
                           {"hex": "0a 0b"}, {"text": "d", "size": 2}]},
               {"result": "0xe00002d6", "reply": "ff"},
               {"reply": "09"}],
       "208": {"result": 3758097090, "reply": "ff"}},
     "methods": {"9": [{"reply": "aa bb"}]}},
    {"name": "ZOL_refuses", "open_result": "0xe00002c1"},
    {"name": "ZOL_null", "null_connection": true}
  ],
  "hid_devices": [{"usage_page": 1, "usage": 2, "reports": {
    "224": {"fields": [{"u32": 4294967295}, {"i32": -2}, {"u64": 1}]},
    "180": {"result": "0xe00002d8"}}}]
})";

using bytes = std::vector<std::uint8_t>;

// An open connection to a service, closed and released at the end.
class connection {
 public:
  explicit connection(const char* name) : service_(lookup(IOServiceNameMatching(name))) {
    result = IOServiceOpen(service_, mach_task_self(), 0, &handle);
  }
  ~connection() {
    if (handle != 0) IOServiceClose(handle);
    IOObjectRelease(service_);
  }
  io_connect_t handle = 0;
  kern_return_t result = 0;

 private:
  io_service_t service_;
};

constexpr std::uint8_t untouched = 0xee;

// A command into a 16-byte buffer offering `capacity` of it.
struct answer {
  kern_return_t result;
  std::size_t size;
  bytes buffer;
};

answer ask(io_connect_t handle, std::uint64_t number, std::size_t capacity = 16) {
  answer out{0, capacity, bytes(16, untouched)};
  out.result = command(handle, number, out.buffer.data(), &out.size);
  return out;
}

bytes first(const answer& reply, std::size_t count) {
  return bytes(reply.buffer.begin(), reply.buffer.begin() + static_cast<long>(count));
}

// Delivery: min(reply, capacity) bytes on success, nothing on failure; the
// caller's bytes past them stay as they were, and a single answer repeats.
TEST(answers, each_call_delivers_what_its_answer_and_capacity_allow) {
  use_phone(phone);
  connection dev("ZOL_dev");
  const struct {
    std::uint64_t command;
    std::size_t capacity;
    std::uint32_t result;
    std::size_t size;
    bytes delivered;
  } calls[] = {
      {215, 16, 0, 6, {1, 2, 3, 4, 5, 6}},
      {215, 4, 0, 4, {1, 2, 3, 4}},
      {215, 0, 0, 0, {}},
      {215, 16, 0, 6, {1, 2, 3, 4, 5, 6}},
      {208, 12, 0xe00002c2, 12, {}},
      {216, 12, 0xe00002c7, 12, {}},
  };
  for (const auto& call : calls) {
    const answer reply = ask(dev.handle, call.command, call.capacity);
    SCOPED_TRACE(call.command);
    EXPECT_EQ(reply.result, static_cast<kern_return_t>(call.result));
    EXPECT_EQ(reply.size, call.size);
    bytes expected = call.delivered;
    expected.resize(16, untouched);
    EXPECT_EQ(reply.buffer, expected);
  }
}

TEST(answers, a_sequence_is_consumed_then_drained) {
  use_phone(phone);
  connection dev("ZOL_dev");
  const answer one = ask(dev.handle, 209);
  EXPECT_EQ(one.size, 9u);
  EXPECT_EQ(first(one, 10), (bytes{0x02, 0x01, 'a', 'b', 0, 0x0a, 0x0b, 'd', 0, untouched}));
  EXPECT_EQ(ask(dev.handle, 209).result, static_cast<kern_return_t>(0xe00002d6));
  EXPECT_EQ(first(ask(dev.handle, 209), 1), bytes{9});
  for (int call = 0; call < 2; ++call) {
    const answer drained = ask(dev.handle, 209);
    EXPECT_EQ(drained.result, KERN_SUCCESS);
    EXPECT_EQ(drained.size, 0u);
  }
  tmxsim::reset_state();
  connection again("ZOL_dev");
  EXPECT_EQ(ask(again.handle, 209).size, 9u);
}

TEST(answers, other_selectors_answer_from_methods) {
  use_phone(phone);
  connection dev("ZOL_dev");
  std::array<std::uint8_t, 4> buffer{};
  std::size_t size = buffer.size();
  EXPECT_EQ(IOConnectCallMethod(dev.handle, 9, nullptr, 0, nullptr, 0, nullptr, nullptr,
                                buffer.data(), &size),
            KERN_SUCCESS);
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(buffer[1], 0xbb);
  size = buffer.size();
  EXPECT_EQ(IOConnectCallMethod(dev.handle, 5, nullptr, 0, nullptr, 0, nullptr, nullptr,
                                buffer.data(), &size),
            static_cast<kern_return_t>(0xe00002c7));
}

TEST(answers, opening_answers_open_result_and_null_connection) {
  use_phone(phone);
  {
    connection refused("ZOL_refuses");
    EXPECT_EQ(refused.result, static_cast<kern_return_t>(0xe00002c1));
    EXPECT_EQ(refused.handle, 0u);
    connection null("ZOL_null");
    EXPECT_EQ(null.result, KERN_SUCCESS);
    EXPECT_EQ(null.handle, 0u);
  }
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(answers, feature_reports_follow_the_same_delivery) {
  use_phone(phone);
  const io_service_t service = lookup(hid_matching(1, 2));
  IOHIDDeviceRef device = IOHIDDeviceCreate(kCFAllocatorDefault, service);
  ASSERT_NE(device, nullptr);

  bytes report(11, untouched);
  CFIndex size = 11;
  EXPECT_EQ(IOHIDDeviceGetReport(device, kIOHIDReportTypeFeature, 0xe0, report.data(), &size),
            static_cast<IOReturn>(0xe00002cd));  // not open yet
  ASSERT_EQ(IOHIDDeviceOpen(device, 0), kIOReturnSuccess);
  size = 10;
  EXPECT_EQ(IOHIDDeviceGetReport(device, kIOHIDReportTypeFeature, 0xe0, report.data(), &size),
            kIOReturnSuccess);
  EXPECT_EQ(size, 10);
  EXPECT_EQ(report, (bytes{0xff, 0xff, 0xff, 0xff, 0xfe, 0xff, 0xff, 0xff, 1, 0, untouched}));
  size = 11;
  EXPECT_EQ(IOHIDDeviceGetReport(device, kIOHIDReportTypeFeature, 0xb4, report.data(), &size),
            static_cast<IOReturn>(0xe00002d8));
  EXPECT_EQ(size, 11);
  EXPECT_EQ(IOHIDDeviceGetReport(device, kIOHIDReportTypeFeature, 0xe1, report.data(), &size),
            static_cast<IOReturn>(0xe00002c7));
  EXPECT_EQ(IOHIDDeviceGetReport(device, kIOHIDReportTypeInput, 0xe0, report.data(), &size),
            static_cast<IOReturn>(0xe00002c7));
  IOHIDDeviceClose(device, 0);
  CFRelease(device);
  IOObjectRelease(service);
  EXPECT_EQ(audit_text(), all_clear);
}

}  // namespace
