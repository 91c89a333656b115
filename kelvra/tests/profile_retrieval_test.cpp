#include <gtest/gtest.h>
#include <tmxsim/control.h>

#include <fstream>
#include <regex>
#include <sstream>

#include "expected_output.h"
#include "quandor/profile_retrieval.h"
#include "run_kelvra.h"

namespace {

const std::string earlier_banners = banners({lyn, profile});

// The sequence number of every line after the banners; -1 for a line
// without one.
std::vector<int> printed_sequence(const std::string& out) {
  std::vector<int> numbers;
  std::istringstream lines(out.substr(std::min(out.size(), earlier_banners.size())));
  const std::regex sequence(" 'sequence_num': +(\\d+),");
  std::smatch found;
  for (std::string line; std::getline(lines, line);)
    numbers.push_back(std::regex_search(line, found, sequence) ? std::stoi(found[1]) : -1);
  return numbers;
}

void expect_profile_step(const std::string& device, const std::vector<int>& sequence) {
  const kelvra_run run = run_kelvra({"--harvest"}, device);
  EXPECT_EQ(run.out.substr(0, earlier_banners.size()), earlier_banners);
  EXPECT_EQ(printed_sequence(run.out), sequence);
  EXPECT_EQ(run.err, render(services_missing({stats_step, lyn_step, assets_step}) +
                            failures{hid_missing}));
  EXPECT_EQ(run.audit, clean_audit);
}

TEST(profile_retrieval, both_logs_drain_until_empty) {
  expect_profile_step("profile_drains_in_several_passes.json", {1, 2, 3, 11, 12, 13});
}

TEST(profile_retrieval, reading_stops_after_ten_passes) {
  std::vector<int> sequence{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  sequence.insert(sequence.end(), 10, 20);
  expect_profile_step("profile_full_every_pass.json", sequence);
}

// 100 bytes give two records; 20 bytes end only the profiler path.
TEST(profile_retrieval, partial_records_are_dropped) {
  expect_profile_step("profile_partial_records.json", {1, 2, 3, 11, 12});
}

TEST(profile_retrieval, raw_mode_prints_labelled_hex_records) {
  std::ifstream file(std::string(KELVRA_TEST_DATA) + "/profile_drains_in_several_passes.json");
  std::stringstream json;
  json << file.rdbuf();
  ASSERT_EQ(tmxsim::load_description(json.str(), "profile_drains_in_several_passes.json"), "");
  tmxsim::reset_state();
  testing::internal::CaptureStdout();
  read_profile_events(0);
  drain_zol_profile(0);
  const std::string out = testing::internal::GetCapturedStdout();
  std::string expected;
  for (const char* sequence : {"01", "02", "03", "0b", "0c", "0d"})
    expected += "prof-event 00000008" + std::string(sequence) + "000000" + std::string(80, '0') + "\n";
  EXPECT_EQ(out, expected);
  const tmxsim::audit_counts held = tmxsim::audit();
  EXPECT_EQ(held.io_objects + held.connections + held.cf_objects + held.misuse, 0);
  tmxsim::load_default_description();
}

}  // namespace
