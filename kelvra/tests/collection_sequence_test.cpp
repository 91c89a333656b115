#include <IOKit/IOReturn.h>
#include <gtest/gtest.h>

#include "run_kelvra.h"

namespace {

const std::string lyn_banner = "==========kelvra lyn 0xd0==============\n";
const std::string profile_banner = "==========kelvra zol-button profile==============\n";

// Every step fails in order; after the first line with an error value every
// number on standard error is hexadecimal.
const std::string no_coprocessor_errors =
    stats_missing_first() + states_missing() + events_missing() + assets_missing() + hid_missing();
const std::string no_coprocessor_errors_again = varnel_failure("service", "0xb57") +
    kelvra_failure("kr == 0 ", "0x82", kIOReturnNotFound) + states_missing() +
    events_missing() + assets_missing() + hid_missing();

TEST(collection_sequence, default_phone_prints_every_banner_in_order_and_no_failure) {
  const kelvra_run run = run_kelvra({"--harvest"}, "");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.audit, clean_audit);
  std::size_t at = 0;
  for (const char* banner :
       {"==========kelvra get-stats==============\npkey_stats\n",
        "==========kelvra lyn 0xd0==============\nlyn State\n",
        "==========kelvra btmspk 0xd0==============\nbtmspk State\n",
        "==========kelvra zol-button 0xd0==============\nPKEY MCLK Counts\n",
        "==========kelvra zol-button 0xd1==============\nPKEY PellamEN Counts\n",
        "==========kelvra zol-button profile==============\n{ ",
        "==========kelvra zol-button get-assets==============\nLength: 1200, expected 1200\n",
        "==============feedscope get 0xe0 -u 0xFF00,0x0020===============\n00000000: ",
        "==============feedscope get 0xb4 -u 0xFF00,0x0020===============\n00000000: ",
        "==============feedscope get 0xe1 -u 0xFF00,0x0020===============\n00000000: ",
        "==============feedscope get 0xe2 -u 0xFF00,0x0020===============\n00000000: ",
        "==============feedscope get 0xe3 -u 0xFF00,0x0020===============\n00000000: ",
        "==============feedscope get 0xe4 -u 0xFF00,0x0020===============\n00000000: "}) {
    at = run.out.find(banner, at);
    ASSERT_NE(at, std::string::npos) << banner;
  }
}

TEST(collection_sequence, machine_without_coprocessor_reports_every_step) {
  const kelvra_run run = run_kelvra({"--harvest"}, "no_coprocessor.json");
  EXPECT_EQ(run.out, lyn_banner + profile_banner);
  EXPECT_EQ(run.err, no_coprocessor_errors);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.audit, clean_audit);
}

TEST(collection_sequence, harvest_twice_runs_the_sequence_twice) {
  const kelvra_run run = run_kelvra({"--harvest", "--harvest"}, "no_coprocessor.json");
  EXPECT_EQ(run.out, lyn_banner + profile_banner + lyn_banner + profile_banner);
  EXPECT_EQ(run.err, no_coprocessor_errors + no_coprocessor_errors_again);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.audit, clean_audit);
}

TEST(collection_sequence, help_after_harvest_fails_after_one_sequence) {
  const kelvra_run run = run_kelvra({"--harvest", "--help"}, "no_coprocessor.json");
  EXPECT_EQ(run.out, lyn_banner + profile_banner);
  EXPECT_EQ(run.err, no_coprocessor_errors + "usage: kelvra [--harvest]\n");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.audit, clean_audit);
}

}  // namespace
