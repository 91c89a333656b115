// The facts of a harvest: the press against the checkpoint records, the
// sequence runs, what failure lines mean.

#include <gtest/gtest.h>

#include <ostream>

#include "inspect/capture/capture_model.h"
#include "inspect/capture/failure_meaning.h"
#include "inspect/capture/press_stats.h"
#include "inspect/capture/tests/model_builders.h"

namespace inspect::test {
namespace {

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
  const harvest_facts& facts = model.harvests[0].facts;
  ASSERT_TRUE(facts.press);
  EXPECT_EQ(!facts.press->disagreements.empty(), GetParam().disagrees);
  if (GetParam().disagrees) {
    EXPECT_EQ(facts.press->disagreements.front().kind, problem_kind::checkpoint_offset);
    EXPECT_EQ(facts.press->disagreements.front().subject, "click 1 down");
    EXPECT_EQ(facts.press->disagreements.front().numbers[0], GetParam().down_offset);
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
  const harvest_facts& facts = model.harvests[0].facts;
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
  const harvest_facts& facts = model.harvests[0].facts;
  ASSERT_EQ(facts.press->disagreements.size(), 1u);
  EXPECT_EQ(facts.press->disagreements[0].kind, problem_kind::latency_field_differs);
  EXPECT_EQ(problem_text(facts.press->disagreements[0]),
            "click 1 down → asset: the record's latency is 650 µs, its timestamps are 600 µs apart");
}

TEST(press_chain, a_button_edge_the_record_does_not_count_disagrees) {
  const stats_record stats = one_click();
  std::vector<profile_entry> profile = checkpoints(0);
  profile.push_back(record(checkpoint_word(2), 8, 200'000, 2));
  const capture_model model = model_of(&stats, profile);
  const harvest_facts& facts = model.harvests[0].facts;
  ASSERT_EQ(facts.press->disagreements.size(), 1u);
  EXPECT_EQ(facts.press->disagreements[0].kind, problem_kind::unmatched_edge);
  EXPECT_EQ(facts.press->disagreements[0].numbers[0], 200'000);
}

TEST(press_chain, without_checkpoints_nothing_is_checked) {
  const stats_record stats = one_click();
  const capture_model model = model_of(&stats, {record(0x02000203, 1, 20'000)});
  const harvest_facts& facts = model.harvests[0].facts;
  EXPECT_TRUE(facts.press->disagreements.empty());
  ASSERT_EQ(facts.press->notes.size(), 1u);
  EXPECT_EQ(facts.press->notes[0].kind, problem_kind::no_checkpoints);
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
  const harvest_facts& facts = model.harvests[0].facts;
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
        meaning_case{"a report step", failure_kind::step_failed, request::report_e3, 0, "",
                     {"HID feature report 0xe3", "gave up"}}),
    case_name<meaning_case>);

}  // namespace
}  // namespace inspect::test

namespace inspect::test {
namespace {

// The facts every output reads, each found once: the touch, the press's
// origin, the checkpoint latencies, the span and the sequence totals.
struct touch_case {
  const char* what;
  std::uint64_t finger_on;
  std::uint64_t finger_off;
  bool touched;
  std::uint64_t origin;
};

void PrintTo(const touch_case& c, std::ostream* out) { *out << c.what; }

class touch_and_origin : public testing::TestWithParam<touch_case> {};

TEST_P(touch_and_origin, have_one_rule) {
  stats_record stats = one_click();
  stats.u64(0, GetParam().finger_on).u64(8, GetParam().finger_off);
  const capture_model model = model_of(&stats, checkpoints(0));
  const press_chain& chain = *model.harvests[0].facts.press;
  EXPECT_EQ(chain.touch.has_value(), GetParam().touched);
  ASSERT_TRUE(chain.origin);
  EXPECT_EQ(*chain.origin, GetParam().origin);
}

INSTANTIATE_TEST_SUITE_P(
    cases, touch_and_origin,
    testing::Values(touch_case{"finger off after finger on", 10'000, 300'000, true, 10'000},
                    touch_case{"finger off at finger on", 10'000, 10'000, false, 10'000},
                    touch_case{"finger off before finger on", 10'000, 5'000, false, 10'000},
                    // Without finger on: the earliest point, start haptics.
                    touch_case{"no finger on", 0, 300'000, false, 11'000}),
    case_name<touch_case>);

TEST(harvest_facts, checkpoint_latency_is_the_checkpoints_own_step) {
  const stats_record stats = one_click();
  const capture_model model = model_of(&stats, checkpoints(30));
  const harvest_facts& facts = model.harvests[0].facts;
  const press_step* down_to_asset = facts.find_step(step_kind::down_to_asset, 0);
  const press_step* held = facts.find_step(step_kind::held, 0);
  ASSERT_TRUE(down_to_asset && held);
  // The down checkpoint 30 µs late: 600 - 30 to its asset, 100 ms - 30 held.
  EXPECT_EQ(down_to_asset->checkpoint_latency, 570);
  EXPECT_EQ(held->checkpoint_latency, 99'970);
}

TEST(harvest_facts, span_and_sequence_totals_count_every_record) {
  const stats_record stats = one_click();
  std::vector<profile_entry> profile = checkpoints(0);
  // A sentinel time, far off the press's axis: in the span all the same.
  profile.push_back(record(checkpoint_word(6), 8, ~std::uint64_t{0}));
  capture_model model = model_of(&stats, profile);
  const harvest_facts& facts = model.harvests[0].facts;
  EXPECT_EQ(facts.span.count, 8u);
  EXPECT_EQ(facts.span.first, 10'000u);
  EXPECT_EQ(facts.span.last, ~std::uint64_t{0});
  EXPECT_EQ(facts.off_axis, 1u);

  profile = checkpoints(0);
  profile.push_back(record(checkpoint_word(6), 10, 310'000));  // 8 and 9 lost
  profile.push_back(record(checkpoint_word(6), 10, 310'000));  // and 10 repeated
  model = model_of(&stats, profile);
  EXPECT_EQ(model.harvests[0].facts.sequence.lost, 2u);
  EXPECT_EQ(model.harvests[0].facts.sequence.repeated, 1u);
  EXPECT_EQ(model.harvests[0].facts.sequence.records, 9u);
}

TEST(harvest_facts, damage_belongs_to_the_harvest_whose_lines_hold_it) {
  capture_model model;
  for (const std::uint64_t line : {5, 40, 90}) model.harvests.emplace_back().line = line;
  const struct {
    std::uint64_t line;
    std::optional<std::uint64_t> byte;
    std::size_t harvest;
  } damage[] = {{1, {}, 0}, {5, {}, 0}, {39, {}, 0}, {40, {}, 1}, {89, {}, 1}, {90, {}, 2},
                {500, {}, 2}, {0, 4096, 2}};
  for (const auto& d : damage)
    model.damage.push_back({.kind = problem_kind::stray_line, .line = d.line, .byte = d.byte});
  model.damage.push_back({.kind = problem_kind::text_before_harvest, .line = 1, .last_line = 4});
  gather_facts(model);
  for (std::size_t i = 0; i < std::size(damage); ++i) {
    EXPECT_EQ(model.damage[i].harvest, damage[i].harvest) << "line " << damage[i].line;
    const std::vector<std::size_t>& held = model.harvests[damage[i].harvest].facts.damage;
    EXPECT_NE(std::find(held.begin(), held.end(), i), held.end());
  }
  // A note loses nothing: the first harvest is damaged by its stray lines
  // alone, and a harvest with only notes would not be.
  EXPECT_TRUE(model.harvests[0].facts.damaged);
}

TEST(harvest_facts, each_record_keeps_the_clock_pair_of_its_own_text) {
  capture_model model = model_of(nullptr, checkpoints(0));
  harvest_model& h = model.harvests[0];
  h.profile[1].has_calendar_text = true;
  h.profile[5].has_calendar_text = true;
  model.clock.segments = {clock_segment{.range = {1000, 1}}, clock_segment{.range = {9000, 1}}};
  model.clock.segment_of = {{h.profile[1].line, 0}, {h.profile[5].line, 1}};
  model.pair = model.clock.pair();
  gather_facts(model);
  const std::vector<record_row>& rows = h.facts.records;
  EXPECT_FALSE(rows[0].pair);  // no text, no calendar time
  ASSERT_TRUE(rows[1].pair && rows[5].pair);
  EXPECT_EQ(*rows[1].pair, model.clock.segments[0].pair());
  EXPECT_EQ(*rows[5].pair, model.clock.segments[1].pair());
}

}  // namespace
}  // namespace inspect::test
