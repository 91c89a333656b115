#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <array>
#include <cctype>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "inspect/views/capture_facts.h"
#include "inspect/capture/failure_meaning.h"
#include "inspect/views/json_text.h"
#include "inspect/views/press_stats.h"
#include "inspect/views/summary_view.h"
#include "inspect/views/timeline_view.h"
#include "inspect/views/trace_view.h"

namespace inspect::views {
namespace {

template <class T>
void put_le(std::uint8_t* at, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) at[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// The statistics record, written at the offsets the collector's reply has.
struct stats_record {
  std::array<std::uint8_t, 282> bytes{};
  stats_record& u64(std::size_t offset, std::uint64_t value) {
    put_le(bytes.data() + offset, value);
    return *this;
  }
  stats_record& u32(std::size_t offset, std::uint32_t value) {
    put_le(bytes.data() + offset, value);
    return *this;
  }
};

// Case names for the test list: "a late record" -> "a_late_record".
template <class Case>
std::string case_name(const testing::TestParamInfo<Case>& p) {
  std::string name = p.param.what;
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  return name;
}

constexpr std::uint32_t pkey_latency = 0x07030003;  // category 7, component 3, type 3

std::uint32_t checkpoint_word(std::uint32_t id) { return pkey_latency | (id << 8); }

profile_entry record(std::uint32_t type_word, std::uint32_t sequence, std::uint64_t timestamp,
                     std::uint32_t first_word = 0) {
  profile_entry entry;
  put_le(entry.bytes.data(), type_word);
  put_le(entry.bytes.data() + 4, sequence);
  put_le(entry.bytes.data() + 8, timestamp);
  put_le(entry.bytes.data() + 16, first_word);
  entry.line = 100 + sequence;
  return entry;
}

// One click: finger on at 10 ms, down at 50 ms, up at 150 ms, assets 600
// and 580 µs after the edges, finger off at 300 ms.
stats_record one_click() {
  stats_record s;
  s.u64(0, 10'000).u64(8, 300'000).u64(16, 11'000).u64(24, 40'000);
  s.u64(88, 50'000).u64(96, 150'000);
  s.u64(136, 50'600).u64(144, 150'580);
  s.u64(184, 600).u64(192, 580);
  s.u32(233, 1 << 1);  // click count 1: the count sits above bit 0
  return s;
}

// Checkpoints at the times of one_click(), the button-down one moved.
std::vector<profile_entry> checkpoints(std::int64_t down_offset) {
  const auto down = static_cast<std::uint64_t>(50'000 + down_offset);
  return {record(checkpoint_word(0), 1, 10'000, 0), record(checkpoint_word(5), 2, 11'000, 5),
          record(checkpoint_word(2), 3, down, 2),   record(checkpoint_word(7), 4, 50'600, 7),
          record(checkpoint_word(3), 5, 150'000, 3), record(checkpoint_word(7), 6, 150'580, 7),
          record(checkpoint_word(1), 7, 300'000, 1)};
}

capture_model model_of(const stats_record* stats, std::vector<profile_entry> profile) {
  capture_model model;
  harvest_model& h = model.harvests.emplace_back();
  if (stats) {
    h.stats.emplace();
    h.stats->printed = true;
    h.stats->record = stats->bytes;
  }
  h.profile_banner = true;
  h.profile = std::move(profile);
  return model;
}

TEST(press_stats, every_field_from_its_offset) {
  stats_record s;
  s.u64(0, 1000).u64(8, 900'000).u64(16, 1500).u64(24, 40'000).u64(266, 3500);
  for (std::size_t i = 0; i < 6; ++i) {
    s.u64(88 + 8 * i, 41'000 + i);
    s.u64(136 + 8 * i, 42'000 + i);
    s.u64(184 + 8 * i, 600 + i);
  }
  s.u32(233, 7).u32(274, 62).u32(278, 12);
  const press_stats p = read_press_stats(s.bytes);
  EXPECT_EQ(p.finger_on, 1000u);
  EXPECT_EQ(p.finger_off, 900'000u);
  EXPECT_EQ(p.start_haptics, 1500u);
  EXPECT_EQ(p.latency_fd_to_down, 40'000u);
  EXPECT_EQ(p.click_count, 3u);  // 7 >> 1
  EXPECT_EQ(p.second_scan, 3500u);
  EXPECT_EQ(p.gorvin_scans, 62u);
  EXPECT_EQ(p.lumet_scans, 12u);
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(p.button[i], 41'000 + i);
    EXPECT_EQ(p.asset[i], 42'000 + i);
    EXPECT_EQ(p.asset_latency[i], 600 + i);
  }
}

TEST(press_stats, second_scan_before_finger_on_is_kept) {
  stats_record s;
  s.u64(0, 10).u64(266, 5);
  EXPECT_EQ(read_press_stats(s.bytes).second_scan, 5u);
}

struct offset_case {
  const char* what;
  std::int64_t down_offset;
  bool disagrees;
};

void PrintTo(const offset_case& c, std::ostream* out) { *out << c.what; }

class checkpoint_offsets : public testing::TestWithParam<offset_case> {};

TEST_P(checkpoint_offsets, beyond_the_tolerance_is_called_out) {
  const stats_record stats = one_click();
  const capture_model model = model_of(&stats, checkpoints(GetParam().down_offset));
  const capture_facts facts = gather_facts(model, {});
  ASSERT_TRUE(facts.press);
  EXPECT_EQ(!facts.press->disagreements.empty(), GetParam().disagrees);
  if (GetParam().disagrees) {
    EXPECT_NE(facts.press->disagreements.front().find("click 1 down"), std::string::npos);
  }
  EXPECT_TRUE(facts.press->notes.empty());
}

INSTANTIATE_TEST_SUITE_P(
    cases, checkpoint_offsets,
    testing::Values(offset_case{"same time", 0, false},
                    offset_case{"logged as the controller handles it", 8, false},
                    offset_case{"at the tolerance", 50, false},
                    offset_case{"past the tolerance", 51, true},
                    offset_case{"before the edge", -120, true}),
    case_name<offset_case>);

TEST(press_chain, steps_from_the_record) {
  const stats_record stats = one_click();
  const capture_model model = model_of(&stats, checkpoints(8));
  const capture_facts facts = gather_facts(model, {});
  const press_chain& chain = *facts.press;
  struct expected_step {
    step_kind kind;
    std::uint64_t duration;
  } expected[] = {{step_kind::finger_to_down, 40'000},
                  {step_kind::held, 100'000},
                  {step_kind::down_to_asset, 600},
                  {step_kind::up_to_asset, 580}};
  ASSERT_EQ(chain.steps.size(), std::size(expected));
  for (std::size_t i = 0; i < chain.steps.size(); ++i) {
    EXPECT_EQ(chain.steps[i].kind, expected[i].kind);
    EXPECT_EQ(chain.duration(chain.steps[i]), expected[i].duration);
  }
}

TEST(press_chain, a_latency_field_off_its_timestamps_disagrees) {
  stats_record stats = one_click();
  stats.u64(184, 650);
  const capture_model model = model_of(&stats, checkpoints(0));
  const capture_facts facts = gather_facts(model, {});
  ASSERT_EQ(facts.press->disagreements.size(), 1u);
  EXPECT_NE(facts.press->disagreements[0].find("650 µs"), std::string::npos);
  EXPECT_NE(facts.press->disagreements[0].find("600 µs apart"), std::string::npos);
}

TEST(press_chain, a_button_edge_the_record_does_not_count_disagrees) {
  const stats_record stats = one_click();
  std::vector<profile_entry> profile = checkpoints(0);
  profile.push_back(record(checkpoint_word(2), 8, 200'000, 2));
  const capture_model model = model_of(&stats, profile);
  const capture_facts facts = gather_facts(model, {});
  ASSERT_EQ(facts.press->disagreements.size(), 1u);
  EXPECT_NE(facts.press->disagreements[0].find("matches no click"), std::string::npos);
}

TEST(press_chain, without_checkpoints_nothing_is_checked) {
  const stats_record stats = one_click();
  const capture_model model = model_of(&stats, {record(0x02000203, 1, 20'000)});
  const capture_facts facts = gather_facts(model, {});
  EXPECT_TRUE(facts.press->disagreements.empty());
  ASSERT_EQ(facts.press->notes.size(), 1u);
  EXPECT_NE(facts.press->notes[0].find("not checked"), std::string::npos);
}

struct run_case {
  const char* what;
  std::vector<std::uint32_t> numbers;
  std::size_t runs;
  std::uint64_t lost;
  std::size_t repeats;
  std::size_t out_of_order;
};

void PrintTo(const run_case& c, std::ostream* out) { *out << c.what; }

class sequence_runs : public testing::TestWithParam<run_case> {};

TEST_P(sequence_runs, lost_repeated_and_late) {
  std::vector<profile_entry> profile;
  std::uint64_t time = 1000;
  for (const std::uint32_t n : GetParam().numbers) profile.push_back(record(0x02000203, n, time += 10));
  for (std::size_t i = 0; i < profile.size(); ++i) profile[i].line = 10 + i;
  const capture_model model = model_of(nullptr, profile);
  const capture_facts facts = gather_facts(model, {});
  ASSERT_EQ(facts.runs.size(), GetParam().runs);
  std::uint64_t lost = 0;
  std::size_t repeats = 0;
  std::size_t late = 0;
  for (const sequence_run& run : facts.runs) {
    lost += run.lost;
    repeats += run.repeats.size();
    late += run.out_of_order;
  }
  EXPECT_EQ(lost, GetParam().lost);
  EXPECT_EQ(repeats, GetParam().repeats);
  EXPECT_EQ(late, GetParam().out_of_order);
}

INSTANTIATE_TEST_SUITE_P(
    cases, sequence_runs,
    testing::Values(run_case{"consecutive", {1, 2, 3}, 1, 0, 0, 0},
                    run_case{"two lost", {1, 2, 5}, 1, 2, 0, 0},
                    run_case{"a duplicate", {1, 2, 2, 3}, 1, 0, 1, 0},
                    run_case{"a late record", {1, 3, 2, 4}, 1, 0, 0, 1},
                    run_case{"a second numbering", {40, 41, 7, 8}, 2, 0, 0, 0},
                    run_case{"across 2 32", {0xfffffffe, 0xffffffff, 0, 1}, 1, 0, 0, 0}),
    case_name<run_case>);

struct meaning_case {
  const char* what;
  failure_kind kind;
  request about;
  std::uint32_t value;
  const char* error_text;
  std::vector<const char*> parts;
};

void PrintTo(const meaning_case& c, std::ostream* out) { *out << c.what; }

class failure_meanings : public testing::TestWithParam<meaning_case> {};

TEST_P(failure_meanings, say_what_went_wrong_and_what_is_lost) {
  failure_line f;
  f.kind = GetParam().kind;
  f.about = GetParam().about;
  f.value = GetParam().value;
  f.error_text = GetParam().error_text;
  f.report_id = 0xe3;
  const std::string text = failure_meaning(f);
  for (const char* part : GetParam().parts) EXPECT_NE(text.find(part), std::string::npos) << text;
}

INSTANTIATE_TEST_SUITE_P(
    cases, failure_meanings,
    testing::Values(
        meaning_case{"a missing service", failure_kind::service_missing, request::stats, 0, "",
                     {"command 215", "not on the phone", "no statistics record"}},
        meaning_case{"a refusal with its text", failure_kind::command_failed, request::lyn_state,
                     0xe00002f0,
                     "(iokit/common) data was not found",
                     {"lyn", "refused", "0xe00002f0", "data was not found"}},
        meaning_case{"a refusal without text", failure_kind::command_failed,
                     request::profiler_log, 0xffffffff, "(null)",
                     {"0xffffffff", "no text for", "profiler log"}},
        meaning_case{"a report step", failure_kind::step_failed, request::hid_report, 0, "",
                     {"HID feature report 0xe3", "gave up"}}),
    case_name<meaning_case>);

TEST(json_text, strings_escape_what_json_must) {
  const struct {
    std::string_view text;
    std::string_view json;
  } cases[] = {
      {"plain", R"("plain")"},
      {"a\"b\\c", R"("a\"b\\c")"},
      {"line\nend\x01", R"("line\u000aend\u0001")"},
      {"5 \xc2\xb5s", "\"5 \xc2\xb5s\""},  // UTF-8 stays as it is
      {"\xff", R"("\u00ff")"},             // a byte that is not UTF-8 keeps its value
  };
  for (const auto& c : cases) {
    std::string out;
    append_json_string(out, c.text);
    EXPECT_EQ(out, c.json);
  }
}

TEST(summary, milliseconds) {
  EXPECT_EQ(milliseconds_text(1250), "1.250");
  EXPECT_EQ(milliseconds_text(-8), "-0.008");
  EXPECT_EQ(milliseconds_text(0), "0.000");
  EXPECT_EQ(milliseconds_text(496'920), "496.920");
}

const nlohmann::ordered_json* event_named(const nlohmann::ordered_json& trace, std::string_view name) {
  for (const auto& e : trace["traceEvents"])
    if (e.value("name", "") == name) return &e;
  return nullptr;
}

TEST(trace, the_press_its_flows_and_counters) {
  const stats_record stats = one_click();
  std::vector<profile_entry> profile = checkpoints(8);
  // An accelerometer sample: x = -5.
  profile.push_back(record(0x02000203, 9, 20'000, static_cast<std::uint32_t>(-5)));
  const capture_model model = model_of(&stats, profile);
  std::string text;
  write_trace(gather_facts(model, {}), text);
  const auto trace = nlohmann::ordered_json::parse(text);
  EXPECT_EQ(trace.begin().key(), "traceEvents");

  // Times from the earliest, finger on at 10 000 µs.
  const nlohmann::ordered_json* slice = event_named(trace, "click 1 down → asset");
  ASSERT_TRUE(slice);
  EXPECT_EQ((*slice)["ts"], 40'000);
  EXPECT_EQ((*slice)["dur"], 600);
  EXPECT_EQ((*slice)["args"]["checkpoint_latency_us"], 592);

  const nlohmann::ordered_json* down = event_named(trace, "click 1 down");
  ASSERT_TRUE(down);
  ASSERT_TRUE(down->contains("bind_id"));
  const nlohmann::ordered_json* checkpoint = event_named(trace, "ckp_PKEYButtonDown");
  ASSERT_TRUE(checkpoint);
  EXPECT_EQ((*checkpoint)["bind_id"], (*down)["bind_id"]);
  EXPECT_EQ((*checkpoint)["flow_in"], true);
  EXPECT_EQ((*checkpoint)["ts"], 40'008);

  const nlohmann::ordered_json* counter = event_named(trace, "accel data x");
  ASSERT_TRUE(counter);
  EXPECT_EQ((*counter)["ph"], "C");
  EXPECT_EQ((*counter)["args"]["value"], -5);
}

TEST(views, an_empty_capture_says_what_is_missing) {
  const capture_model empty;
  const capture_facts facts = gather_facts(empty, {});
  ASSERT_FALSE(facts.missing.empty());
  EXPECT_NE(facts.missing[0].find("no harvest"), std::string::npos);

  std::string trace;
  write_trace(facts, trace);
  const auto parsed = nlohmann::ordered_json::parse(trace);
  EXPECT_EQ(parsed.begin().key(), "traceEvents");
  EXPECT_FALSE(parsed["otherData"]["missing"].empty());

  std::string summary;
  write_summary_json(facts, "-", summary);
  EXPECT_TRUE(nlohmann::json::parse(summary)["press"].is_null());

  std::string page;
  write_timeline(facts, page);
  EXPECT_NE(page.find("Nothing to draw"), std::string::npos);
}

TEST(views, records_without_statistics_still_have_tracks) {
  const capture_model model = model_of(nullptr, checkpoints(0));
  const capture_facts facts = gather_facts(model, {});
  EXPECT_FALSE(facts.press);
  ASSERT_EQ(facts.lanes.size(), 1u);
  EXPECT_EQ(facts.lanes[0].category_name, "pkey");
  EXPECT_EQ(facts.lanes[0].component_name, "latency");
  EXPECT_NE(facts.missing[0].find("no statistics record"), std::string::npos);
}

}  // namespace
}  // namespace inspect::views
