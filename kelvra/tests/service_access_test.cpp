#include <IOKit/IOReturn.h>
#include <gtest/gtest.h>

#include "run_kelvra.h"

namespace {

const std::string lyn_banner = "==========kelvra lyn 0xd0==============\n";
const std::string profile_banner = "==========kelvra zol-button profile==============\n";

TEST(service_access, rejected_open_is_reported_by_both_layers) {
  const int refused = kIOReturnNotPrivileged;
  const kelvra_run run = run_kelvra({"--harvest"}, "button_open_rejected.json");
  EXPECT_EQ(run.out, lyn_banner + profile_banner);
  EXPECT_EQ(run.err, varnel_failure("kr == 0 ", "2906", refused, true) +
                         kelvra_failure("kr == 0 ", "0x82", refused) + states_missing() +
                         events_missing() + varnel_failure("kr == 0 ", "0xb5a", refused, true) +
                         kelvra_failure("kr == 0 ", "0xbd", refused) + hid_missing());
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.audit, clean_audit);
}

TEST(service_access, rejected_command_is_reported_by_both_layers) {
  const int rejected = kIOReturnError, unsupported = kIOReturnUnsupported;
  const kelvra_run run = run_kelvra({"--harvest"}, "button_command_rejected.json");
  EXPECT_EQ(run.out, lyn_banner + profile_banner);
  EXPECT_EQ(run.err, varnel_failure("kr == 0 ", "2910", rejected, true) +
                         kelvra_failure("kr == 0 ", "0x82", rejected) + states_missing() +
                         events_missing() +
                         varnel_failure("kr == 0 ", "0xb5e", unsupported, true) +
                         kelvra_failure("kr == 0 ", "0xbd", unsupported) + hid_missing());
  EXPECT_EQ(run.audit, clean_audit);
}

// A zero connection is reported, yet the step prints its untouched, zeroed
// buffer with the capacity as length.
TEST(service_access, zero_connection_counts_as_success) {
  const kelvra_run run = run_kelvra({"--harvest"}, "button_null_connection.json");
  EXPECT_EQ(run.err, varnel_failure("connect", "2907") + varnel_failure("service", "2903") +
                         kelvra_failure("kr == 0 ", "148", kIOReturnNotFound) +
                         events_missing() + varnel_failure("connect", "0xb5b") + hid_missing());
  const std::string stats_start = "==========kelvra get-stats==============\npkey_stats\n"
                                  "-- Last Button Press --\nClick Count" +
                                  std::string(47, ' ') + ": 0\n";
  EXPECT_EQ(run.out.rfind(stats_start, 0), 0u);
  const std::string assets_start =
      lyn_banner + profile_banner + "==========kelvra zol-button get-assets==============\n"
      "Length: 4096, expected 1200\nASSET [Slow][SingleDown]: enable 0, slot 0, gain 0, min 0, max 0\n";
  EXPECT_NE(run.out.find(assets_start), std::string::npos);
  EXPECT_EQ(run.audit, clean_audit);
}

}  // namespace
