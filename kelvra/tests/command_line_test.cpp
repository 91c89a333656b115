#include <gtest/gtest.h>

#include "run_kelvra.h"

namespace {

// Only --harvest starts the sequence; no option at all ends quietly, anything
// else gives the platform's diagnostic, if any, and the usage line.
TEST(command_line, options_that_start_nothing) {
  const std::string usage = "usage: kelvra [--harvest]\n";
  const struct {
    std::vector<std::string> args;
    std::string err;
  } calls[] = {
      {{}, ""},
      {{"--help"}, usage},
      {{"-b"}, usage},
      {{"-f", "x"}, usage},
      {{"--x"}, "kelvra: unrecognized option '--x'\n" + usage},
      {{"-s"}, "kelvra: invalid option -- 's'\n" + usage},
      {{"-f"}, "kelvra: option requires an argument -- 'f'\n" + usage},
  };
  for (const auto& call : calls) {
    SCOPED_TRACE(call.args.empty() ? "(none)" : call.args[0]);
    const kelvra_run run = run_kelvra(call.args, "no_coprocessor.json");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, call.err);
    EXPECT_EQ(run.status, call.err.empty() ? 0 : 1);
    EXPECT_EQ(run.audit, clean_audit);
  }
}

}  // namespace
