// Integers in decimal: the size and the digits, checked against the standard
// library at every change of size and at the ends of each integer type.

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <string>
#include <vector>

#include "liblog_zol/line_builder.h"

namespace {

std::vector<std::uint64_t> edge_values() {
  std::vector<std::uint64_t> values = {0, UINT8_MAX, UINT16_MAX, UINT32_MAX, UINT64_MAX};
  for (std::uint64_t power = 1;; power *= 10) {
    values.insert(values.end(), {power - 1, power, power + 1});
    if (power > UINT64_MAX / 10) break;
  }
  for (int bit = 0; bit < 64; ++bit) {
    const std::uint64_t value = std::uint64_t{1} << bit;
    values.insert(values.end(), {value - 1, value, value + 1});
  }
  return values;
}

TEST(decimal_text, size_and_digits_as_to_chars_writes_them) {
  for (const std::uint64_t value : edge_values()) {
    char expected[24];
    const auto [end, error] = std::to_chars(expected, expected + sizeof expected, value);
    const std::string want(expected, end);
    char out[24];
    const char* const start = zol::decimal_ending_at(out + sizeof out, value);
    EXPECT_EQ(std::string(start, static_cast<const char*>(out + sizeof out)), want) << value;
    EXPECT_EQ(zol::decimal_size(value), want.size()) << value;
  }
}

}  // namespace
