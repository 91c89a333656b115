// `kelvra` run on the small phones of devices/.

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "expected_output.h"

// Each --harvest runs the sequence once; no option at all ends quietly,
// anything else gives the platform's diagnostic, if any, and the usage line.
// On a machine without coprocessor every step fails in order, and after the
// first line with an error value every number on standard error is
// hexadecimal, in a second run of the sequence too.
TEST(command_line, runs_a_sequence_for_each_harvest_option) {
  const std::string usage = "usage: kelvra [--harvest]\n";
  const struct {
    std::vector<std::string> args;
    int sequences;
    std::string diagnostic;
  } calls[] = {
      {{}, 0, ""},
      {{"--help"}, 0, usage},
      {{"-b"}, 0, usage},
      {{"-f", "x"}, 0, usage},
      {{"--x"}, 0, "kelvra: unrecognized option '--x'\n" + usage},
      {{"-s"}, 0, "kelvra: invalid option -- 's'\n" + usage},
      {{"-f"}, 0, "kelvra: option requires an argument -- 'f'\n" + usage},
      {{"--harvest"}, 1, ""},
      {{"--harvest", "--harvest"}, 2, ""},
      {{"--harvest", "--help"}, 1, usage},
  };
  for (const auto& call : calls) {
    SCOPED_TRACE(testing::PrintToString(call.args));
    std::string out;
    failures lines;
    for (int i = 0; i < call.sequences; ++i) {
      out += banners({lyn, profile});
      lines = lines + no_coprocessor;
    }
    const kelvra_run run = run_kelvra(call.args, KELVRA_TEST_DATA "/no_coprocessor.json");
    EXPECT_EQ(run.out, out);
    EXPECT_EQ(run.err, render(lines) + call.diagnostic);
    EXPECT_EQ(run.status, call.diagnostic.empty() ? 0 : 1);
    EXPECT_EQ(run.audit, clean_audit);
  }
}

// The sequence number of every line after the profile banner, -1 for a line
// without one, on phones where only the profile step finds its services.
TEST(profile_retrieval, both_logs_drain_until_empty_or_for_ten_passes_whole_records_only) {
  const std::regex sequence_number(" 'sequence_num': +(\\d+),");
  const std::pair<std::string, std::vector<int>> phones[] = {
      {"profile_drains_in_several_passes.json", {1, 2, 3, 11, 12, 13}},
      {"profile_full_every_pass.json",
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20}},
      // 100 bytes give two records; 20 bytes end only the profiler path.
      {"profile_partial_records.json", {1, 2, 3, 11, 12}},
  };
  for (const auto& [phone, sequence] : phones) {
    SCOPED_TRACE(phone);
    const kelvra_run run = run_kelvra({"--harvest"}, KELVRA_TEST_DATA "/" + phone);
    ASSERT_TRUE(run.out.starts_with(banners({lyn, profile}))) << run.out;
    std::vector<int> printed;
    std::istringstream lines(run.out.substr(banners({lyn, profile}).size()));
    std::smatch found;
    for (std::string line; std::getline(lines, line);)
      printed.push_back(std::regex_search(line, found, sequence_number) ? std::stoi(found[1]) : -1);
    EXPECT_EQ(printed, sequence);
    EXPECT_EQ(run.err, render(services_missing({stats_step, lyn_step, assets_step}) +
                              failures{hid_missing}));
    EXPECT_EQ(run.audit, clean_audit);
  }
}
