// Captures a harvest cannot have printed are refused at the right line;
// the phone that cannot exist either.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "inspect/capture/capture_reader.h"
#include "inspect/capture/phone_writer.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/clock_source.h"

namespace inspect {
namespace {

// A machine without a coprocessor, standard error merged; one profile line
// stands where the profile reader's passes print.
std::vector<std::string> no_coprocessor(const std::string& profile_line) {
  return {
      "Assertion failed: varnel: Check failed: service bail quandor/varnel:2903",
      "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:130 (iokit/common) data was not found (0xe00002f0)",
      "==========kelvra lyn 0xd0==============",
      "Assertion failed: varnel: Check failed: service bail quandor/varnel:0xb57",
      "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:0x94 (iokit/common) data was not found (0xe00002f0)",
      "==========kelvra zol-button profile==============",
      profile_line,
      "Assertion failed: varnel: Check failed: service bail quandor/varnel:0xb57",
      "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:0xbd (iokit/common) data was not found (0xe00002f0)",
      "Assertion failed: kelvra: Check failed: service bail kelvra/kelvra:0xdd",
  };
}

std::string record_line(std::uint32_t sequence = 5) {
  std::uint8_t record[48] = {0, 1, 0, 7};  // a pkey record
  for (int i = 0; i < 4; ++i) record[4 + i] = static_cast<std::uint8_t>(sequence >> (8 * i));
  zol::no_clock none;
  return format_profile_record(record, none);
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

TEST(capture_reader, takes_a_harvest_and_its_failures) {
  capture_model model;
  input_fault fault;
  ASSERT_TRUE(read_capture_text(joined(no_coprocessor(record_line())), "cap", {}, model, fault))
      << fault.where << ": " << fault.fault;
  ASSERT_EQ(model.harvests.size(), 1u);
  const harvest_model& harvest = model.harvests[0];
  EXPECT_TRUE(model.has_stderr);
  EXPECT_EQ(harvest.failures.size(), 7u);
  ASSERT_EQ(harvest.profile.size(), 1u);
  EXPECT_EQ(harvest.profile[0].line, 7u);
  EXPECT_FALSE(model.timesync);
  std::string phone;
  phone_fault why;
  EXPECT_TRUE(write_phone(model, phone, why)) << why.message;
  // Only the profile readers' entry: every other service is missing.
  EXPECT_NE(phone.find("\"ZOL_profile\""), std::string::npos);
  EXPECT_EQ(phone.find("ZOL_zol-button"), std::string::npos);
  EXPECT_EQ(phone.find("hid_devices"), std::string::npos);
}

struct refusal {
  const char* name;
  std::size_t line;      // the line changed, from 1; 0 to drop nothing
  const char* replaced;  // its new text; null drops the line
  std::uint64_t fault_line;
  const char* fault;
};

const refusal refusals[] = {
    {"banner_out_of_order", 3, "==========kelvra btmspk 0xd0==============", 3, "expected"},
    {"decimal_after_hex", 4, "Assertion failed: varnel: Check failed: service bail quandor/varnel:2903", 4,
     "in decimal after"},
    {"hex_before_any_value", 1, "Assertion failed: varnel: Check failed: service bail quandor/varnel:0xb57", 1,
     "hexadecimal before"},
    {"unknown_source_line", 4, "Assertion failed: varnel: Check failed: service bail quandor/varnel:0xb58", 4,
     "no failure of a harvest"},
    {"step_value_differs", 5,
     "Assertion failed: kelvra: Check failed: kr == 0  bail kelvra/kelvra:0x94 (iokit/common) data was not found (0xe00002f1)",
     5, "another result"},
    {"step_line_missing", 5, nullptr, 5, "kelvra line 148"},
    {"profile_banner_missing", 6, nullptr, 6, "profile banner"},
    {"profile_key_altered", 7, "", 7, "not what its binary-data prints"},
    {"matching_cannot_fail", 10, "Assertion failed: kelvra: Check failed: matching bail kelvra/kelvra:0xd7", 10,
     "cannot make"},
    {"cut_short", 9, nullptr, 9, "failure line"},
};

class capture_refusal : public testing::TestWithParam<refusal> {};

TEST_P(capture_refusal, names_line_and_fault) {
  const refusal& c = GetParam();
  std::string line = record_line();
  std::vector<std::string> lines = no_coprocessor(line);
  if (c.replaced == nullptr) {
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(c.line - 1));
  } else if (*c.replaced == '\0') {
    // A decoded key that its bytes do not give.
    lines[c.line - 1].replace(lines[c.line - 1].find("'pkey'"), 6, "'uart'");
  } else {
    lines[c.line - 1] = c.replaced;
  }
  capture_model model;
  input_fault fault;
  ASSERT_FALSE(read_capture_text(joined(lines), "cap", {}, model, fault));
  EXPECT_EQ(fault.where, "line " + std::to_string(c.fault_line)) << fault.fault;
  EXPECT_NE(fault.fault.find(c.fault), std::string::npos) << fault.fault;
}

INSTANTIATE_TEST_SUITE_P(cases, capture_refusal, testing::ValuesIn(refusals),
                         [](const auto& param_info) { return std::string(param_info.param.name); });

// Each log numbers its own records: the profile service's log is taken to
// end where the numbers jump most, when both logs then fit their readers.
struct source_split {
  const char* name;
  std::vector<std::uint32_t> sequences;
  std::size_t repeat_last;  // more lines numbered on from the last
  std::size_t event_records;
};

const source_split source_splits[] = {
    {"one_log", {5, 6, 7}, 0, 3},
    {"second_log_numbered_lower", {40213, 40214, 40215, 9117, 9118}, 0, 3},
    {"widest_of_two_jumps", {5, 6, 9, 10, 2, 3}, 0, 4},
    {"wrapped_numbers_follow", {0xfffffffe, 0xffffffff, 0, 1, 70}, 0, 4},
    {"second_log_beyond_the_profiler_reader", {5, 900}, 10000, 10002},
};

class sources : public testing::TestWithParam<source_split> {};

TEST_P(sources, split_where_the_numbers_jump) {
  const source_split& c = GetParam();
  std::vector<std::string> profile;
  for (std::uint32_t sequence : c.sequences) profile.push_back(record_line(sequence));
  for (std::uint32_t n = 1; n <= c.repeat_last; ++n) profile.push_back(record_line(c.sequences.back() + n));
  std::vector<std::string> lines = no_coprocessor("");
  lines.erase(lines.begin() + 6);
  lines.insert(lines.begin() + 6, profile.begin(), profile.end());
  capture_model model;
  input_fault fault;
  ASSERT_TRUE(read_capture_text(joined(lines), "cap", {}, model, fault)) << fault.where << ": " << fault.fault;
  std::size_t events = 0;
  for (const device_call& call : model.harvests.at(0).calls)
    if (call.about == request::profile_events) events += call.reply.size() / 48;
  EXPECT_EQ(events, c.event_records);
}

INSTANTIATE_TEST_SUITE_P(cases, sources, testing::ValuesIn(source_splits),
                         [](const auto& param_info) { return std::string(param_info.param.name); });

TEST(phone_writer, refuses_a_service_that_is_both_missing_and_there) {
  // Two harvests: the profile service missing in the first, answering in the second.
  std::vector<std::string> first = no_coprocessor(record_line());
  first.erase(first.begin() + 6);
  first.insert(first.begin() + 6,
               {"Assertion failed: varnel: Check failed: service bail quandor/varnel:0xb57",
                "Assertion failed: varnel: Check failed: result == 0  bail quandor/varnel:0x74f (iokit/common) data was not found (0xe00002f0)"});
  std::vector<std::string> second = no_coprocessor(record_line());
  for (std::string& line : second) {
    const auto at = line.find(":2903");
    if (at != std::string::npos) line.replace(at, 5, ":0xb57");
    const auto step = line.find(":130 ");
    if (step != std::string::npos) line.replace(step, 5, ":0x82 ");
  }
  first.insert(first.end(), second.begin(), second.end());
  capture_model model;
  input_fault fault;
  ASSERT_TRUE(read_capture_text(joined(first), "cap", {}, model, fault)) << fault.where << ": " << fault.fault;
  std::string phone;
  phone_fault why;
  EXPECT_FALSE(write_phone(model, phone, why));
  EXPECT_NE(why.message.find("one phone cannot answer so"), std::string::npos);
}

}  // namespace
}  // namespace inspect
