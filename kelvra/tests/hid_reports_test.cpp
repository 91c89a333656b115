#include <IOKit/IOReturn.h>
#include <gtest/gtest.h>

#include "run_kelvra.h"

namespace {

const std::string earlier_banners = "==========kelvra lyn 0xd0==============\n"
                                    "==========kelvra zol-button profile==============\n";
const std::string earlier_errors =
    stats_missing_first() + states_missing() + events_missing() + assets_missing();

std::string banner(const std::string& report) {
  return "==============feedscope get " + report + " -u 0xFF00,0x0020===============\n";
}

void expect_hid_step(const std::string& device, const std::string& out, const std::string& err) {
  const kelvra_run run = run_kelvra({"--harvest"}, device);
  EXPECT_EQ(run.out, earlier_banners + out);
  EXPECT_EQ(run.err, earlier_errors + err);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.audit, clean_audit);
}

TEST(hid_reports, device_failures_end_the_step) {
  expect_hid_step("hid_wrong_usage.json", "", hid_missing());
  expect_hid_step("hid_not_creatable.json", "", kelvra_failure("device", "0xe0"));
  expect_hid_step("hid_open_fails.json", "",
                  kelvra_failure("result == 0 ", "0xe3", kIOReturnExclusiveAccess));
}

TEST(hid_reports, a_refused_report_ends_the_step) {
  expect_hid_step("hid_second_report_fails.json",
                  banner("0xe0") +
                      "00000000: 41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50  | ABCDEFGH IJKLMNOP\n" +
                      banner("0xb4"),
                  kelvra_failure("result == 0 ", "0xee", kIOReturnTimeout));
}

TEST(hid_reports, reports_are_dumped_as_delivered) {
  expect_hid_step("hid_empty_and_33_byte_reports.json",
                  banner("0xe0") + banner("0xb4") +
                      "00000000: 41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50  | ABCDEFGH IJKLMNOP\n"
                      "00000010: 51 52 53 54 55 56 57 58  59 5a 61 62 63 64 65 66  | QRSTUVWX YZabcdef\n"
                      "00000020: 67 " + std::string(46, ' ') + " | g\n" +
                      banner("0xe1") + banner("0xe2") + banner("0xe3") + banner("0xe4"),
                  "");
}

}  // namespace
