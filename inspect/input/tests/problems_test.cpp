// Problem rows: the schemas list every kind the tool can write, and each
// sentence is made from its row's own parts.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <set>
#include <string>

#include "inspect/input/problems.h"

namespace inspect::test {
namespace {

TEST(problems, the_schema_lists_every_kind_and_no_other) {
  std::ifstream file(std::string(KELVRA_SCHEMA_DIR) + "/facts.schema.json");
  const nlohmann::json schema = nlohmann::json::parse(file);
  const nlohmann::json& listed = schema["$defs"]["problem"]["properties"]["kind"]["enum"];
  std::set<std::string> in_schema(listed.begin(), listed.end());
  std::set<std::string> in_tool;
  for (const problem_row& row : problem_rows) {
    const std::string code(row.code);
    EXPECT_TRUE(in_tool.insert(code).second) << code << " twice";
    EXPECT_EQ(code.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), std::string::npos) << code;
  }
  EXPECT_EQ(in_schema, in_tool);
}

struct sentence_case {
  const char* what;
  problem row;
  const char* text;
  const char* where;
};

class sentences : public testing::TestWithParam<sentence_case> {};

TEST_P(sentences, are_made_from_the_row) {
  EXPECT_EQ(problem_text(GetParam().row), GetParam().text);
  EXPECT_EQ(GetParam().row.where(), GetParam().where);
}

INSTANTIATE_TEST_SUITE_P(
    cases, sentences,
    testing::Values(
        sentence_case{"reason_alone",
                      {.kind = problem_kind::unreadable_line, .line = 9, .reason = "binary-data holds 47 values"},
                      "binary-data holds 47 values", "line 9"},
        sentence_case{"reason_after",
                      {.kind = problem_kind::input_cut_short, .byte = 480, .reason = "gzip stream ends early"},
                      "the input is cut short: gzip stream ends early", "byte 480"},
        sentence_case{"subject_and_number",
                      {.kind = problem_kind::harvest_cut_short,
                       .line = 300,
                       .subject = "the banner \"x\"",
                       .numbers = {2, 0}},
                      "the capture ends inside harvest 2, where the banner \"x\" belongs", "line 300"},
        sentence_case{"signed_offset",
                      {.kind = problem_kind::checkpoint_offset,
                       .subject = "click 1 down",
                       .object = "ckp_PKEYButtonDown",
                       .numbers = {-120, 50}},
                      "click 1 down: ckp_PKEYButtonDown is -120 µs from the statistics record's time (more than 50 µs)",
                      ""},
        sentence_case{"one_not_ones",
                      {.kind = problem_kind::calendar_not_local, .line = 4, .last_line = 4, .numbers = {1, 4}},
                      "1 calendar time from line 4 name no local time in this time zone (give the phone's)",
                      "line 4"},
        sentence_case{"run_of_lines",
                      {.kind = problem_kind::unexpected_text, .line = 3, .last_line = 7, .subject = "a banner"},
                      "a banner expected here", "lines 3-7"}),
    [](const testing::TestParamInfo<sentence_case>& param) { return std::string(param.param.what); });

TEST(problems, only_lost_input_makes_a_capture_damaged) {
  for (const problem_row& row : problem_rows)
    EXPECT_EQ(loses_input({.kind = row.kind}), row.level == severity::lost) << row.code;
}

}  // namespace
}  // namespace inspect::test
