// The outputs of a capture model: JSON strings, the trace's press, flows
// and counters, and what an empty harvest gives.

#include <gtest/gtest.h>

#include <set>

#include <nlohmann/json.hpp>

#include "inspect/capture/number_text.h"
#include "inspect/capture/tests/model_builders.h"
#include "inspect/outputs/json_writer.h"
#include "inspect/outputs/report_writer.h"
#include "inspect/outputs/summary_view.h"
#include "inspect/outputs/timeline_view.h"
#include "inspect/outputs/trace_tracks.h"
#include "inspect/outputs/trace_view.h"

namespace inspect::test {
namespace {

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
      // Long texts are cleared eight bytes at a time: a byte to escape at
      // each place of a word, and in the tail.
      {"0123456789abcdef0123", R"("0123456789abcdef0123")"},
      {"01234567\"9abcdef", R"("01234567\"9abcdef")"},
      {"0123456789abcde\\", R"("0123456789abcde\\")"},
      {"0123456789\x1f", R"("0123456789\u001f")"},
      {"0123456\x7f" "89", R"("0123456\u007f89")"},
      {"012345678 \xc2\xb5s", "\"012345678 \xc2\xb5s\""},
      {"~}|{zyxw !#$%&'()", "\"~}|{zyxw !#$%&'()\""},  // the edges of plain ASCII
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
  write_trace(model, 0, text);
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

TEST(trace, overlapping_slices_go_on_numbered_threads_of_their_kind) {
  thread_packer packer;
  packer.reserve("finger");
  packer.reserve("button");
  const struct {
    const char* kind;
    std::uint64_t from, to;
    int tid;
  } slices[] = {
      {"finger", 10, 20, 1},
      {"finger", 12, 18, 1},  // nests
      {"finger", 15, 30, 3},  // overlaps: a second finger thread
      {"button", 40, 50, 2},
      {"finger", 18, 35, 4},  // overlaps both
      {"finger (2)", 0, 1, 5},  // a kind whose name looks like a copy's
      {"finger", 50, 60, 1},
  };
  for (const auto& s : slices) EXPECT_EQ(packer.place(s.kind, s.from, s.to), s.tid) << s.kind << s.from;
  const struct {
    const char* kind;
    int copy;
    const char* name;
  } threads[] = {{"finger", 1, "finger"},     {"button", 1, "button"},
                 {"finger", 2, "finger (2)"}, {"finger", 3, "finger (3)"},
                 {"finger (2)", 1, "finger (2)"}};
  ASSERT_EQ(packer.slots().size(), std::size(threads));
  for (std::size_t i = 0; i < std::size(threads); ++i) {
    EXPECT_EQ(packer.slots()[i].kind, threads[i].kind);
    EXPECT_EQ(packer.slots()[i].copy, threads[i].copy);
    EXPECT_EQ(packer.slots()[i].name, threads[i].name);
  }
}

TEST(views, an_empty_harvest_says_what_is_missing) {
  capture_model empty;
  empty.harvests.emplace_back();
  gather_facts(empty);
  const harvest_facts& facts = empty.harvests[0].facts;
  ASSERT_FALSE(facts.missing.empty());
  EXPECT_EQ(facts.missing[0].kind, problem_kind::no_statistics);

  std::string trace;
  write_trace(empty, 0, trace);
  const auto parsed = nlohmann::ordered_json::parse(trace);
  EXPECT_EQ(parsed.begin().key(), "traceEvents");
  EXPECT_EQ(parsed["otherData"]["missing"][0]["kind"], "no_statistics");

  std::string summary;
  write_summary(empty, 0, *json_summary_printer(summary));
  EXPECT_TRUE(nlohmann::json::parse(summary)["press"].is_null());

  std::string page;
  write_timeline(empty, 0, page);
  EXPECT_NE(page.find("Nothing to draw"), std::string::npos);
}

TEST(views, records_without_statistics_still_have_tracks) {
  const capture_model model = model_of(nullptr, checkpoints(0));
  const harvest_facts& facts = model.harvests[0].facts;
  EXPECT_FALSE(facts.press);
  ASSERT_EQ(facts.lanes.size(), 1u);
  EXPECT_EQ(facts.lanes[0].category_name, "pkey");
  EXPECT_EQ(facts.lanes[0].component_name, "latency");
  EXPECT_EQ(facts.missing[0].kind, problem_kind::no_statistics);
}

// The report's statistics give each click's edges once, in its clicks: a
// parser that keeps the last of repeated keys would lose the others.
TEST(report, statistics_repeat_no_key) {
  stats_record stats = one_click();
  stats.u64(104, 70'000);  // click 2's down, though the record counts one click
  const capture_model model = model_of(&stats, checkpoints(0));
  const std::string report = write_report(model);
  // Every object's keys, each once.
  std::vector<std::set<std::string>> open;
  using json = nlohmann::ordered_json;
  const json parsed = json::parse(report, [&](int, json::parse_event_t event, json& value) {
    if (event == json::parse_event_t::object_start) open.emplace_back();
    if (event == json::parse_event_t::object_end) open.pop_back();
    if (event == json::parse_event_t::key) {
      EXPECT_TRUE(open.back().insert(value.get<std::string>()).second) << value;
    }
    return true;
  });
  const auto& statistics = parsed["harvests"][0]["statistics"];
  EXPECT_FALSE(statistics.contains("button_timestamp"));
  ASSERT_EQ(statistics["clicks"].size(), 3u);
  EXPECT_EQ(statistics["clicks"][0]["button_down"], 50'000);
  EXPECT_EQ(statistics["clicks"][0]["button_up_to_play_asset"], 580);
  EXPECT_EQ(statistics["clicks"][1]["button_down"], 70'000);
}

}  // namespace
}  // namespace inspect::test
