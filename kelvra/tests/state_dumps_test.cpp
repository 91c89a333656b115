#include <IOKit/IOReturn.h>
#include <gtest/gtest.h>

#include "run_kelvra.h"

namespace {

const std::string banner_lyn = "==========kelvra lyn 0xd0==============\n";
const std::string banner_btmspk = "==========kelvra btmspk 0xd0==============\n";
const std::string banner_d0 = "==========kelvra zol-button 0xd0==============\n";
const std::string banner_d1 = "==========kelvra zol-button 0xd1==============\n";
const std::string banner_profile = "==========kelvra zol-button profile==============\n";

std::string power_state(const std::string& service, int state, int ap, int zol) {
  return service + " State\npower state   : " + std::to_string(state) +
         "\nAP request    : " + std::to_string(ap) + "\nZOL request   : " + std::to_string(zol) + "\n";
}

std::string counts(const std::string& heading, int enable, int ap, int zol) {
  return heading + "\nEnable        : " + std::to_string(enable) + "\nAP ref        : " +
         std::to_string(ap) + "\nZOL ref       : " + std::to_string(zol) + "\n";
}

// The button answers neither statistics nor assets; no profile, no HID.
std::string errors_around_state_dumps() {
  const int unsupported = kIOReturnUnsupported;
  return varnel_failure("kr == 0 ", "2910", unsupported, true) +
         kelvra_failure("kr == 0 ", "0x82", unsupported) + events_missing() +
         varnel_failure("kr == 0 ", "0xb5e", unsupported, true) +
         kelvra_failure("kr == 0 ", "0xbd", unsupported) + hid_missing();
}

TEST(state_dumps, an_empty_reply_leaves_later_requests_no_capacity) {
  const kelvra_run run = run_kelvra({"--harvest"}, "lyn_empty_reply_leaves_zero_capacity.json");
  EXPECT_EQ(run.out, banner_lyn + banner_btmspk + banner_d0 + banner_d1 + banner_profile);
  EXPECT_EQ(run.err, errors_around_state_dumps());
  EXPECT_EQ(run.audit, clean_audit);
}

// "lyn" delivers 5 bytes, so every later request gets 5 bytes of its reply;
// the rest of the shared buffer stays as zeroed at the start of the step.
TEST(state_dumps, each_request_is_offered_what_the_previous_delivered) {
  const kelvra_run run = run_kelvra({"--harvest"}, "lyn_short_reply_caps_next_requests.json");
  EXPECT_EQ(run.out, banner_lyn + power_state("lyn", 1, 2, 0) + banner_btmspk +
                         power_state("btmspk", 7, 8, 0) + banner_d0 +
                         counts("PKEY MCLK Counts", 1, 0, 3) + banner_d1 +
                         counts("PKEY PellamEN Counts", 0, 0, 5) + banner_profile);
  EXPECT_EQ(run.err, errors_around_state_dumps());
  EXPECT_EQ(run.audit, clean_audit);
}

TEST(state_dumps, a_failed_request_ends_the_step) {
  const kelvra_run run = run_kelvra({"--harvest"}, "btmspk_missing_ends_state_dumps.json");
  EXPECT_EQ(run.out, banner_lyn + power_state("lyn", 1, 2, 3) + banner_btmspk + banner_profile);
  EXPECT_EQ(run.err, stats_missing_first() + varnel_failure("service", "0xb57") +
                         kelvra_failure("kr == 0 ", "0x99", kIOReturnNotFound) +
                         events_missing() + assets_missing() + hid_missing());
  EXPECT_EQ(run.audit, clean_audit);
}

}  // namespace
