#include "quandor/failure.h"

#include <gtest/gtest.h>
#include <mach/mach_error.h>

#include <iostream>
#include <string>

namespace {

template <class... Args>
std::string stderr_of(Args... args) {
  testing::internal::CaptureStderr();
  report_failure(args...);
  return testing::internal::GetCapturedStderr();
}

TEST(failure_line, absent_parts_and_line_zero_are_left_out) {
  EXPECT_EQ(stderr_of("kelvra", nullptr, nullptr, nullptr, nullptr, 0, 0),
            "Assertion failed: kelvra: \n");
  EXPECT_EQ(stderr_of("kelvra", "device", "bail", nullptr, "kelvra/kelvra", 0, 0),
            "Assertion failed: kelvra: Check failed: device bail \n");
}

TEST(failure_line, every_part_present_then_the_base_stays_hexadecimal) {
  std::cerr << std::dec << std::noshowbase;
  const auto not_found = static_cast<std::int32_t>(0xe00002f0);
  const std::string text = mach_error_string(not_found);
  EXPECT_EQ(stderr_of("varnel", "kr == 0 ", "bail", text.c_str(), "quandor/varnel", 2906,
                      not_found),
            "Assertion failed: varnel: Check failed: kr == 0  bail " + text +
                " quandor/varnel:2906 " + text + " (0xe00002f0)\n");
  EXPECT_EQ(stderr_of("kelvra", "kr == 0 ", "bail", nullptr, "kelvra/kelvra", 130, 0),
            "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:0x82\n");
  std::cerr << std::dec << std::noshowbase;
}

}  // namespace
