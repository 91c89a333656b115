// The profile-record hex line and its label limit.

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <string>

#include "liblog_zol/ZOLProfile.h"

namespace {

std::array<std::uint8_t, profile_record_size> counting_record() {
  std::array<std::uint8_t, profile_record_size> record{};
  for (std::size_t i = 0; i < record.size(); ++i) record[i] = static_cast<std::uint8_t>(i);
  record.back() = 0xff;
  return record;
}

std::string hex_line(const std::string& label) {
  const auto record = counting_record();
  testing::internal::CaptureStdout();
  tmx_profile_hexdump(label.c_str(), record.data());
  return testing::internal::GetCapturedStdout();
}

TEST(profile_hexdump, label_then_96_lowercase_digits) {
  EXPECT_EQ(hex_line("prof-event "),
            "prof-event 000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
            "202122232425262728292a2b2c2d2eff\n");
}

TEST(profile_hexdump_death, label_of_158_fits_and_159_aborts) {
  EXPECT_EQ(hex_line(std::string(158, 'L')).size(), 158u + 96u + 1u);
  // The platform's assertion entry: its line on standard error, then abort.
  EXPECT_EXIT(hex_line(std::string(159, 'L')), testing::KilledBySignal(SIGABRT),
               "^Assertion failed: \\(\\(strlen\\(label\\) \\+ 2\\*bufLen \\+ 1\\) < "
               "sizeof\\(line\\)\\), function tmx_profile_hexdump, file liblog_zol/ZOLProfile, "
               "line 60\\.\n$");
}

}  // namespace
