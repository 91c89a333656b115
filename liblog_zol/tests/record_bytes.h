#pragma once

// Test records: 48 bytes laid out little-endian, field by field.

#include <gtest/gtest.h>
#include <tmxsim/control.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

#include "liblog_zol/ZOLProfile.h"

class record_bytes {
 public:
  explicit record_bytes(std::uint32_t type_word, std::uint32_t sequence = 0,
                        std::uint64_t timestamp = 0) {
    put(0, type_word, 4).put(4, sequence, 4).put(8, timestamp, 8);
  }

  record_bytes& u8(std::size_t offset, std::uint8_t value) { return put(offset, value, 1); }
  record_bytes& u16(std::size_t offset, std::uint16_t value) { return put(offset, value, 2); }
  record_bytes& u32(std::size_t offset, std::uint32_t value) { return put(offset, value, 4); }
  record_bytes& u64(std::size_t offset, std::uint64_t value) { return put(offset, value, 8); }
  record_bytes& text(std::size_t offset, std::string_view chars) {
    std::memcpy(bytes_.data() + offset, chars.data(), chars.size());
    return *this;
  }
  // Payload byte k holds k, so a field's value names the offset it came from.
  record_bytes& counting() {
    for (std::uint8_t k = 16; k < 48; ++k) bytes_[k] = k;
    return *this;
  }

  const std::uint8_t* data() const { return bytes_.data(); }
  std::string line() const { return format_profile_record(data()); }

  // The items between "sequence_num" and the first "type-id".
  std::string payload() const {
    const std::string whole = line();
    const std::size_t start = whole.find(',', whole.find(" 'sequence_num':")) + 1;
    return whole.substr(start, whole.find(" 'type-id':", start) - start);
  }

  // The payload the generic writer gives the same bytes (as an execution record).
  std::string generic_payload() const {
    record_bytes execution = *this;
    execution.bytes_[3] = 0;
    return execution.payload();
  }

 private:
  record_bytes& put(std::size_t offset, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
      bytes_[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
    return *this;
  }

  std::array<std::uint8_t, profile_record_size> bytes_{};
};

// A phone without timesync service, with times in UTC so calendar texts are
// fixed; a test ends holding nothing of the platform's.
class profile_phone_test : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC", 1);
    tzset();
    ASSERT_EQ(tmxsim::load_description("{}", "test phone"), "");
    tmxsim::reset_state();
  }
  void TearDown() override {
    const tmxsim::audit_counts held = tmxsim::audit();
    EXPECT_EQ(held.io_objects + held.cf_objects + held.misuse, 0);
    tmxsim::load_default_description();
  }
};
