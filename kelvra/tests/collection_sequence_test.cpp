#include <gtest/gtest.h>

#include "expected_output.h"
#include "run_kelvra.h"

namespace {

TEST(collection_sequence, default_phone_prints_every_banner_in_order_and_no_failure) {
  const kelvra_run run = run_kelvra({"--harvest"}, "");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.audit, clean_audit);
  // What each banner's step prints first.
  const char* const first_lines[] = {
      "pkey_stats",       "lyn State",  "btmspk State", "PKEY MCLK Counts", "PKEY PellamEN Counts",
      "{ ",               "Length: 1200, expected 1200\n",
      "00000000: ",       "00000000: ", "00000000: ",   "00000000: ",       "00000000: ",
      "00000000: "};
  std::size_t at = 0;
  for (std::size_t b = 0; b < banner_texts.size(); ++b) {
    at = run.out.find(banner_texts[b] + "\n" + first_lines[b], at);
    ASSERT_NE(at, std::string::npos) << banner_texts[b];
  }
}

// Every step fails in order; after the first line with an error value every
// number on standard error is hexadecimal, in a second run of the sequence too.
TEST(collection_sequence, machine_without_coprocessor_reports_every_step) {
  struct invocation {
    std::vector<std::string> args;
    int sequences;
    int status;
    std::string usage;
  };
  for (const invocation& call : {invocation{{"--harvest"}, 1, 0, ""},
                                 invocation{{"--harvest", "--harvest"}, 2, 0, ""},
                                 invocation{{"--harvest", "--help"}, 1, 1,
                                            "usage: kelvra [--harvest]\n"}}) {
    std::string out;
    failures lines;
    for (int i = 0; i < call.sequences; ++i) {
      out += banners({lyn, profile});
      lines = lines + no_coprocessor;
    }
    const kelvra_run run = run_kelvra(call.args, "no_coprocessor.json");
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, render(lines) + call.usage);
    EXPECT_EQ(run.status, call.status);
    EXPECT_EQ(run.audit, clean_audit);
  }
}

}  // namespace
