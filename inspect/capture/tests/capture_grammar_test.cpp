// The harvest grammar on captures no collector prints whole: each is read
// to its end, the damage named at its line, the harvests counted.

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "inspect/capture/capture_reader.h"

namespace inspect {
namespace {

const std::string stats_failed =
    "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:130 (iokit/common) data "
    "was not found (0xe00002f0)";
const std::string service_missing = "Assertion failed: varnel: Check failed: service bail quandor/varnel:2903";
const std::string lyn = "==========kelvra lyn 0xd0==============";
const std::string stats = "==========kelvra get-stats==============";
const std::string profile = "==========kelvra zol-button profile==============";

struct grammar_case {
  const char* what;
  std::vector<std::string> lines;
  std::size_t harvests;
  std::vector<std::uint64_t> damaged_lines;  // each damage's line, in order told
};

const grammar_case cases[] = {
    {"the step's line without the access line before it",
     {stats_failed, lyn, "Assertion failed: varnel: Check failed: service bail quandor/varnel:0xb57",
      "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:0x94 (iokit/common) data "
      "was not found (0xe00002f0)",
      profile},
     1, {1, 6}},
    {"a harvest's first lines where no harvest can have them", {lyn, stats, lyn}, 2, {2, 4}},
    {"a line no harvest starts with, again and again",
     {"Assertion failed: kelvra: Check failed: result == 0  bail kelvra/kelvra:232 (iokit/common) "
      "data was not found (0xe00002f0)",
      "Assertion failed: kelvra: Check failed: result == 0  bail kelvra/kelvra:0xe8 (iokit/common) "
      "data was not found (0xe00002f0)"},
     // Each a harvest of its own: its banners missing up to its report, then its own banner.
     2, {1, 1, 2, 2}},
    {"a decimal line number after a value set hexadecimal",
     {service_missing,
      "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:130 (iokit/common) data "
      "was not found (0xe00002f0)",
      lyn, service_missing},
     1, {4, 5}},
};

class capture_grammar : public testing::TestWithParam<grammar_case> {};

TEST_P(capture_grammar, reads_to_the_end_and_names_each_damage) {
  const grammar_case& c = GetParam();
  std::string text;
  for (const std::string& line : c.lines) text += line + "\n";
  capture_model model;
  input_fault fault;
  capture_options options;
  options.messages = nullptr;
  ASSERT_TRUE(read_capture(memory_source(text), "cap", options, model, fault)) << fault.fault;
  EXPECT_EQ(model.harvests.size(), c.harvests);
  std::vector<std::uint64_t> lines;
  for (const problem& d : model.damage) lines.push_back(d.line);
  EXPECT_EQ(lines, c.damaged_lines);
  EXPECT_TRUE(model.lost);
}

INSTANTIATE_TEST_SUITE_P(cases, capture_grammar, testing::ValuesIn(cases),
                         [](const testing::TestParamInfo<grammar_case>& param_info) {
                           std::string name = param_info.param.what;
                           for (char& ch : name)
                             if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
                           return name;
                         });

}  // namespace
}  // namespace inspect
