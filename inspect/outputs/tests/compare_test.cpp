// Two capture models compared part by part: each edit of one harvest shows
// in its part and nowhere else, tolerances and --ignore change the verdict
// and not the facts, and the printers lay out the same comparison.

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>

#include "inspect/capture/tests/model_builders.h"
#include "inspect/outputs/compare_printer.h"

namespace inspect::test {
namespace {

using edit = std::function<void(harvest_model&)>;

failure_line failure(std::uint64_t line, std::int64_t source_line, std::uint32_t value,
                     std::string text) {
  failure_line f;
  f.line = line;
  f.about = request::assets;
  f.module = "kelvra";
  f.check = "kr == 0 ";
  f.source = "kelvra/kelvra";
  f.source_line = source_line;
  f.value = value;
  f.text = std::move(text);
  return f;
}

// one_click() with its checkpoints, a lyn state dump, an asset table of one
// enabled entry, a HID report, and whatever `change` does to it.
capture_model harvest_of(const edit& change) {
  const stats_record stats = one_click();
  capture_model model = model_of(&stats, checkpoints(0));
  harvest_model& h = model.harvests[0];
  h.states.push_back({request::lyn_state, 20,
                      std::vector<std::uint8_t>{1, 0, 0, 0, 14, 0, 0, 0, 231, 0, 0, 0}, false});
  h.assets.emplace();
  h.assets->length = 1200;
  h.assets->table[0] = 1;                                // entry 0 enabled
  put_le<std::int32_t>(h.assets->table.data() + 21, 4);  // in slot 4
  h.hid.push_back({request::report_e0, 90, {0xe0, 0x04, 0x0c, 0x07}, false, false});
  change(h);
  gather_facts(model);
  return model;
}

void nothing(harvest_model&) {}

void asset_one_later(harvest_model& h) {
  put_le<std::uint64_t>(h.stats->record.data() + 136, 50'601);  // click 1 down asset
  put_le<std::uint64_t>(h.stats->record.data() + 184, 601);     // and its latency
}

using statuses = std::map<compare_part, part_status>;

struct compare_case {
  std::string what;
  edit change_b;
  std::uint64_t tolerance_us;
  std::vector<compare_part> ignore;
  statuses expected;  // every other part: no_difference
};

void PrintTo(const compare_case& c, std::ostream* out) { *out << c.what; }

class compare_parts_case : public testing::TestWithParam<compare_case> {};

TEST_P(compare_parts_case, shows_in_its_part_alone) {
  const compare_case& c = GetParam();
  const capture_model a = harvest_of(nothing);
  const capture_model b = harvest_of(c.change_b);
  const comparison result = compare_captures(a, 0, b, 0, {c.tolerance_us, c.ignore});
  bool differs = false;
  for (const compare_part_row& row : compare_parts) {
    const auto expected = c.expected.find(row.part);
    const part_status want =
        expected == c.expected.end() ? part_status::no_difference : expected->second;
    EXPECT_EQ(status_key(result.status_of(row.part)), status_key(want)) << row.key;
    differs = differs || want == part_status::differs;
  }
  EXPECT_EQ(result.agree(), !differs);
}

using enum compare_part;
using enum part_status;

INSTANTIATE_TEST_SUITE_P(
    compare_edits, compare_parts_case,
    testing::Values(
        compare_case{"the same harvest", nothing, 0, {}, {}},
        compare_case{"an asset 1 us later",
                     asset_one_later,
                     0,
                     {},
                     {{press, differs}, {statistics, differs}}},
        compare_case{"an asset 1 us later within a tolerance of 1",
                     asset_one_later,
                     1,
                     {},
                     {{press, agrees}, {statistics, agrees}}},
        compare_case{"the whole press 1 ms later",
                     [](harvest_model& h) {
                       for (const std::size_t offset : {0, 8, 16, 88, 96, 136, 144, 266}) {
                         std::uint64_t time = 0;
                         for (std::size_t i = 0; i < 8; ++i)
                           time |= std::uint64_t{h.stats->record[offset + i]} << (8 * i);
                         put_le<std::uint64_t>(h.stats->record.data() + offset, time + 1000);
                       }
                     },
                     0,
                     {},
                     {{statistics, agrees}}},
        compare_case{"a state dump field",
                     [](harvest_model& h) { (*h.states[0].record)[4] = 15; },
                     0,
                     {},
                     {{state_dumps, differs}}},
        compare_case{"a state dump not printed",
                     [](harvest_model& h) { h.states[0].record.reset(); },
                     0,
                     {},
                     {{state_dumps, differs}}},
        compare_case{"a report byte",
                     [](harvest_model& h) { h.hid[0].bytes[2] = 0x0d; },
                     0,
                     {},
                     {{hid_reports, differs}}},
        compare_case{"a report refused",
                     [](harvest_model& h) {
                       h.hid[0] = {request::report_e0, 90, {}, true, false};
                     },
                     0,
                     {},
                     {{hid_reports, differs}}},
        compare_case{"a checkpoint record dropped",
                     [](harvest_model& h) { h.profile.erase(h.profile.begin() + 4); },
                     0,
                     {},
                     {{records, differs}, {events, differs}, {sequence_numbers, differs}}},
        compare_case{"a checkpoint record dropped, records ignored",
                     [](harvest_model& h) { h.profile.erase(h.profile.begin() + 4); },
                     0,
                     {records, events, sequence_numbers},
                     {{records, ignored}, {events, ignored}, {sequence_numbers, ignored}}},
        compare_case{"an asset entry enabled",
                     [](harvest_model& h) { h.assets->table[25] = 1; },
                     0,
                     {},
                     {{assets, differs}}},
        compare_case{
            "a failure line",
            [](harvest_model& h) { h.failures.push_back(failure(40, 189, 0xe00002c7, "x")); },
            0,
            {},
            {{failures, differs}}}),
    case_name<compare_case>);

TEST(compare, a_latency_difference_in_microseconds_and_percent) {
  const comparison c = compare_captures(harvest_of(nothing), 0, harvest_of(asset_one_later), 0, {});
  const latency_change* down = nullptr;
  for (const latency_change& l : c.press.latencies)
    if (l.step == step_kind::down_to_asset && l.click == 0) down = &l;
  ASSERT_TRUE(down);
  EXPECT_EQ(down->label, "click 1 down → asset");
  EXPECT_EQ(down->a, 600u);
  EXPECT_EQ(down->b, 601u);
  EXPECT_EQ(down->difference, 1);
  EXPECT_DOUBLE_EQ(*down->percent, 100.0 / 600.0);
  // The latency field differs; the timestamp behind it is not compared.
  ASSERT_EQ(c.statistics.changes.size(), 2u);
  EXPECT_EQ(field_name_text(c.statistics.changes[0]), "play_asset_latency[0]");
  EXPECT_EQ(verdict_key(c.statistics.changes[0].result), "differs");
  EXPECT_EQ(field_name_text(c.statistics.changes[1]), "play_asset_timestamp[0]");
  EXPECT_EQ(verdict_key(c.statistics.changes[1].result), "ignored");
}

TEST(compare, fields_reports_and_events_say_where) {
  const comparison c = compare_captures(harvest_of(nothing), 0, harvest_of([](harvest_model& h) {
                                          (*h.states[0].record)[4] = 15;
                                          h.assets->table[25 + 21] = 9;  // entry 1's slot
                                          h.hid[0].bytes[3] = 0;
                                          h.hid[0].bytes.push_back(1);
                                          h.profile.erase(h.profile.begin() + 4);
                                        }),
                                        0, {});
  ASSERT_EQ(c.state_dumps.changes.size(), 1u);
  EXPECT_EQ(c.state_dumps.changes[0].where, "lyn 0xd0");
  EXPECT_EQ(c.state_dumps.changes[0].name, "ap_request");
  EXPECT_EQ(c.state_dumps.changes[0].a, layouts::field_value(std::uint64_t{14}));
  EXPECT_EQ(c.state_dumps.changes[0].b, layouts::field_value(std::uint64_t{15}));
  ASSERT_EQ(c.assets.changes.size(), 1u);
  EXPECT_EQ(c.assets.changes[0].where, "ASSET [Slow][SingleUp]");
  EXPECT_EQ(c.assets.changes[0].entry, 1u);
  ASSERT_EQ(c.hid.reports.size(), 1u);
  EXPECT_EQ(c.hid.reports[0].offsets, std::vector<std::size_t>{3});
  ASSERT_EQ(c.events.only_a.size(), 1u);
  EXPECT_EQ(c.events.only_a[0].event, "ckp_PKEYButtonUp");
  EXPECT_EQ(c.sequence.a.lost, 0u);
  EXPECT_EQ(c.sequence.b.lost, 1u);
}

TEST(compare, failures_match_whatever_their_line_and_number_base) {
  const auto with = [](std::vector<failure_line> lines) {
    return harvest_of([&](harvest_model& h) { h.failures = lines; });
  };
  const capture_model a =
      with({failure(40, 189, 0xffffffff, "kelvra/kelvra:189"), failure(41, 250, 5, "")});
  const capture_model b =
      with({failure(57, 250, 5, ""), failure(73, 189, 0xffffffff, "kelvra/kelvra:0xbd"),
            failure(80, 189, 0xe00002c7, "")});
  const failure_comparison f = compare_captures(a, 0, b, 0, {}).failures;
  ASSERT_EQ(f.both.size(), 2u);
  EXPECT_EQ(f.both[0].first->line, 40u);
  EXPECT_EQ(f.both[0].second->line, 73u);
  EXPECT_TRUE(f.only_a.empty());
  ASSERT_EQ(f.only_b.size(), 1u);
  EXPECT_EQ(f.only_b[0]->line, 80u);
}

TEST(compare, wild_times_neither_overflow_nor_agree) {
  const comparison c =
      compare_captures(harvest_of(nothing), 0, harvest_of([](harvest_model& h) {
                         put_le<std::uint64_t>(h.stats->record.data() + 0, 1);
                         put_le<std::uint64_t>(h.stats->record.data() + 88, ~std::uint64_t{0} - 8);
                       }),
                       0, {});
  EXPECT_FALSE(c.agree());
  for (const latency_change& l : c.press.latencies)
    if (l.step == step_kind::finger_to_down) {
      EXPECT_EQ(l.difference, std::numeric_limits<std::int64_t>::max());
    }
}

TEST(compare, printers_lay_out_one_comparison) {
  const capture_model a = harvest_of(nothing);
  const capture_model b = harvest_of(asset_one_later);
  const comparison c = compare_captures(a, 0, b, 0, {0, {records}});
  std::string text, json, page;
  write_comparison(c, *text_compare_printer(text));
  write_comparison(c, *json_compare_printer(json));
  write_comparison(c, *page_compare_printer(page));
  EXPECT_NE(text.find("\nstate dumps: no difference\n"), std::string::npos);
  EXPECT_NE(text.find("+1 µs"), std::string::npos);
  EXPECT_NE(text.find("The captures differ: press, statistics."), std::string::npos);
  const auto doc = nlohmann::json::parse(json);
  EXPECT_EQ(doc["agree"], false);
  EXPECT_EQ(doc["differing_parts"], nlohmann::json::array({"press", "statistics"}));
  EXPECT_EQ(doc["ignored_parts"], nlohmann::json::array({"records"}));
  EXPECT_EQ(doc["parts"]["press"]["latencies"][1]["difference_us"], 1);
  EXPECT_EQ(doc["parts"]["statistics"]["changes"][0]["element"], 0);
  EXPECT_EQ(page.rfind("<!DOCTYPE html>", 0), 0u);
  EXPECT_EQ(page.find("<script"), std::string::npos);
  EXPECT_NE(page.find("+1 µs"), std::string::npos);
}

}  // namespace
}  // namespace inspect::test
