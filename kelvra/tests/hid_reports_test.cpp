#include <gtest/gtest.h>

#include "expected_output.h"
#include "run_kelvra.h"

namespace {

// Report 0xe0 is empty, 0xb4 holds 33 bytes: a dump prints what was delivered.
TEST(hid_reports, reports_are_dumped_as_delivered) {
  const kelvra_run run = run_kelvra({"--harvest"}, "hid_empty_and_33_byte_reports.json");
  EXPECT_EQ(run.out,
            banners({lyn, profile, hid_e0, hid_b4}) +
                "00000000: 41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50  | ABCDEFGH IJKLMNOP\n"
                "00000010: 51 52 53 54 55 56 57 58  59 5a 61 62 63 64 65 66  | QRSTUVWX YZabcdef\n"
                "00000020: 67 " + std::string(46, ' ') + " | g\n" +
                banners({hid_e1, hid_e2, hid_e3, hid_e4}));
  EXPECT_EQ(run.err, render(services_missing({stats_step, lyn_step, events_step, assets_step})));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.audit, clean_audit);
}

}  // namespace
