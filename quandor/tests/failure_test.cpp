#include "quandor/failure.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>

namespace {

template <class... Args>
std::string stderr_of(Args... args) {
  testing::internal::CaptureStderr();
  report_failure(args...);
  return testing::internal::GetCapturedStderr();
}

// Absent parts and line zero are left out. The base set for the first error
// value stays; a result without a text still gives a whole line, and the
// lines after it are written too.
TEST(failure_line, error_values_then_hexadecimal_line_numbers) {
  std::cerr << std::dec << std::noshowbase;
  EXPECT_EQ(stderr_of("kelvra", nullptr, nullptr, nullptr, nullptr, 0, 0),
            "Assertion failed: kelvra: \n");
  EXPECT_EQ(stderr_of("kelvra", "device", "bail", nullptr, "kelvra/kelvra", 0, 0),
            "Assertion failed: kelvra: Check failed: device bail \n");
  const auto not_found = static_cast<std::int32_t>(0xe00002f0);
  const std::string text = "(iokit/common) data was not found";
  EXPECT_EQ(stderr_of("varnel", "kr == 0 ", "bail", error_text(not_found), "quandor/varnel",
                      2906, not_found),
            "Assertion failed: varnel: Check failed: kr == 0  bail " + text +
                " quandor/varnel:2906 " + text + " (0xe00002f0)\n");
  EXPECT_EQ(stderr_of("kelvra", "kr == 0 ", "bail", nullptr, "kelvra/kelvra", 130, 0),
            "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:0x82\n");
  EXPECT_EQ(stderr_of("varnel", "kr == 0 ", "bail", error_text(-1), "quandor/varnel", 2910, -1),
            "Assertion failed: varnel: Check failed: kr == 0  bail (null) quandor/varnel:0xb5e"
            " (null) (0xffffffff)\n");
  EXPECT_EQ(stderr_of("kelvra", "service", "bail", nullptr, "kelvra/kelvra", 221, 0),
            "Assertion failed: kelvra: Check failed: service bail kelvra/kelvra:0xdd\n");
  std::cerr << std::dec << std::noshowbase;
}

}  // namespace
