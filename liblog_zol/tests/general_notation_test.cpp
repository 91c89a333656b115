// Doubles as "%g" writes them (six significant digits, ties to even on the
// exact value) and as JSON numbers that read back as the same double.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "liblog_zol/general_notation.h"

namespace {

std::string general(double value) {
  char out[32];
  return {out, zol::write_general(value, out)};
}

std::string round_trip(double value) {
  char out[48];
  return {out, zol::write_round_trip(value, out)};
}

TEST(general_notation, six_significant_digits_as_the_c_library_writes) {
  const struct {
    double value;
    const char* text;
  } cases[] = {
      {1.5, "1.5"},
      {-98304.0 / 65536, "-1.5"},
      {2147483648.0 / 65536, "32768"},
      {2147483647.0 / 65536, "32768"},  // 32767.99998... rounds up
      {1.0 / 65536, "1.52588e-05"},
      {1.0 / 16384, "6.10352e-05"},
      {1.0 / 16, "0.0625"},
      {1000000.0 / 4096, "244.141"},
      {409856.0 / 4096, "100.062"},   // 100.0625: a tie, kept even
      {410368.0 / 4096, "100.188"},   // 100.1875: a tie, rounded to even
      {999999.5, "1e+06"},            // the carry moves to the exponent form
      {123456.0, "123456"},
      {1234567.0, "1.23457e+06"},
      {0.0, "0"},
      {-0.0, "-0"},
      {1e300, "1e+300"},
      {0.1, "0.1"},
  };
  for (const auto& test : cases) EXPECT_EQ(general(test.value), test.text) << test.value;
}

// Fixed-point samples, the records' doubles, over every binary point the
// fast path takes and beyond, against the C library.
TEST(general_notation, fixed_point_values_as_the_c_library_writes_them) {
  for (int shift = 0; shift <= 40; ++shift) {
    for (std::int64_t raw = -40000000; raw <= 40000000; raw += 99991) {
      const double value = static_cast<double>(raw) / static_cast<double>(std::int64_t{1} << shift);
      char expected[32];
      std::snprintf(expected, sizeof expected, "%g", value);
      ASSERT_EQ(general(value), expected) << raw << " / 2^" << shift;
      EXPECT_EQ(std::strtod(round_trip(value).c_str(), nullptr), value) << raw << " / 2^" << shift;
    }
  }
}

TEST(general_notation, json_numbers_read_back_exactly) {
  const struct {
    double value;
    const char* text;
  } cases[] = {
      {1.0 / 65536, "0.0000152587890625"},
      {-98304.0 / 65536, "-1.5"},
      {2147483647.0 / 65536, "32767.999984741211"},  // 21 exact digits: 17 suffice
      {0.0, "0"},
      {0.1, "0.10000000000000001"},
  };
  for (const auto& test : cases) EXPECT_EQ(round_trip(test.value), test.text) << test.value;
}

}  // namespace
