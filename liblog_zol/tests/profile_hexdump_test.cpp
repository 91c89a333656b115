#include "liblog_zol/ZOLProfile.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

std::array<std::uint8_t, profile_record_size> counting_record() {
  std::array<std::uint8_t, profile_record_size> record{};
  for (std::size_t i = 0; i < record.size(); ++i) record[i] = static_cast<std::uint8_t>(i);
  record.back() = 0xff;
  return record;
}

TEST(profile_hexdump, label_then_96_lowercase_digits) {
  const auto record = counting_record();
  testing::internal::CaptureStdout();
  tmx_profile_hexdump("prof-event ", record.data());
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "prof-event 000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
            "202122232425262728292a2b2c2d2eff\n");
}

TEST(profile_hexdump_death, label_of_158_fits_and_159_aborts) {
  const auto record = counting_record();
  const std::string longest(158, 'L');
  testing::internal::CaptureStdout();
  tmx_profile_hexdump(longest.c_str(), record.data());
  EXPECT_EQ(testing::internal::GetCapturedStdout().size(), 158u + 96u + 1u);

  const std::string too_long(159, 'L');
  EXPECT_DEATH(tmx_profile_hexdump(too_long.c_str(), record.data()),
               "liblog_zol/ZOLProfile:60: tmx_profile_hexdump: .*"
               "\\(strlen\\(label\\) \\+ 2\\*bufLen \\+ 1\\) < sizeof\\(line\\)");
}

}  // namespace
