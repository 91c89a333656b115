// The profile-record hex line and its label limit.

#include <csignal>
#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

// Bytes 0 to 46 hold their offset, the last byte 0xff.
std::string hex_line(const std::string& label) {
  record_bytes record(0x03020100, 0x07060504, 0x0f0e0d0c0b0a0908);
  record.counting().u8(47, 0xff);
  testing::internal::CaptureStdout();
  tmx_profile_hexdump(label.c_str(), record.data());
  return testing::internal::GetCapturedStdout();
}

TEST(profile_hexdump_death, label_then_96_lowercase_digits_and_a_label_of_159_aborts) {
  EXPECT_EQ(hex_line("prof-event "),
            "prof-event 000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
            "202122232425262728292a2b2c2d2eff\n");
  EXPECT_EQ(hex_line(std::string(158, 'L')).size(), 158u + 96u + 1u);
  // The platform's assertion entry: its line on standard error, then abort.
  EXPECT_EXIT(hex_line(std::string(159, 'L')), testing::KilledBySignal(SIGABRT),
               "^Assertion failed: \\(\\(strlen\\(label\\) \\+ 2\\*bufLen \\+ 1\\) < "
               "sizeof\\(line\\)\\), function tmx_profile_hexdump, file liblog_zol/ZOLProfile, "
               "line 60\\.\n$");
}

}  // namespace
