#include <gtest/gtest.h>

#include "run_kelvra.h"

namespace {

const std::string usage_line = "usage: kelvra [--harvest]\n";

void expect_usage(const std::vector<std::string>& args, const std::string& diagnostic) {
  const kelvra_run run = run_kelvra(args, "no_coprocessor.json");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, diagnostic + usage_line);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.audit, clean_audit);
}

TEST(command_line, no_options_prints_nothing_and_succeeds) {
  const kelvra_run run = run_kelvra({}, "no_coprocessor.json");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.audit, clean_audit);
}

TEST(command_line, options_that_start_nothing_give_the_usage_line) {
  expect_usage({"--help"}, "");
  expect_usage({"-b"}, "");
  expect_usage({"-f", "x"}, "");
  expect_usage({"--x"}, "kelvra: unrecognized option '--x'\n");
  expect_usage({"-s"}, "kelvra: invalid option -- 's'\n");
  expect_usage({"-f"}, "kelvra: option requires an argument -- 'f'\n");
}

}  // namespace
