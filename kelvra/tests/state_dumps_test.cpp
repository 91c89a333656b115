#include <gtest/gtest.h>

#include "expected_output.h"
#include "run_kelvra.h"

namespace {

std::string power_state(const std::string& service, int state, int ap, int zol) {
  return service + " State\npower state   : " + std::to_string(state) +
         "\nAP request    : " + std::to_string(ap) + "\nZOL request   : " + std::to_string(zol) + "\n";
}

std::string counts(const std::string& heading, int enable, int ap, int zol) {
  return heading + "\nEnable        : " + std::to_string(enable) + "\nAP ref        : " +
         std::to_string(ap) + "\nZOL ref       : " + std::to_string(zol) + "\n";
}

// The button answers neither statistics nor assets; no profile, no HID.
const std::string errors_around_state_dumps =
    render(command_failed(stats_step, kIOReturnUnsupported) + service_missing(events_step) +
           command_failed(assets_step, kIOReturnUnsupported) + failures{hid_missing});

TEST(state_dumps, an_empty_reply_leaves_later_requests_no_capacity) {
  const kelvra_run run = run_kelvra({"--harvest"}, "lyn_empty_reply_leaves_zero_capacity.json");
  EXPECT_EQ(run.out, banners({lyn, btmspk, button_d0, button_d1, profile}));
  EXPECT_EQ(run.err, errors_around_state_dumps);
  EXPECT_EQ(run.audit, clean_audit);
}

// "lyn" delivers 5 bytes, so every later request gets 5 bytes of its reply;
// the rest of the shared buffer stays as zeroed at the start of the step.
TEST(state_dumps, each_request_is_offered_what_the_previous_delivered) {
  const kelvra_run run = run_kelvra({"--harvest"}, "lyn_short_reply_caps_next_requests.json");
  EXPECT_EQ(run.out, banners({lyn}) + power_state("lyn", 1, 2, 0) + banners({btmspk}) +
                         power_state("btmspk", 7, 8, 0) + banners({button_d0}) +
                         counts("PKEY MCLK Counts", 1, 0, 3) + banners({button_d1}) +
                         counts("PKEY PellamEN Counts", 0, 0, 5) + banners({profile}));
  EXPECT_EQ(run.err, errors_around_state_dumps);
  EXPECT_EQ(run.audit, clean_audit);
}

}  // namespace
