// What every JSON output stands on: integers kept exact for browsers, the
// writer's commas and numbers, the pages' axis steps and head; and a
// capture's rows of the fleet's tables, read back with another JSON parser.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>

#include "inspect/capture/tests/model_builders.h"
#include "inspect/outputs/json_writer.h"
#include "inspect/outputs/page_parts.h"
#include "inspect/outputs/table_rows.h"

namespace inspect::test {
namespace {

TEST(json_writer, commas_keys_and_numbers_parse_back) {
  for (const bool indent : {false, true}) {
    std::string out;
    json_writer json(out, indent);
    json.begin_object();
    json.key("empty").begin_array().end_array();
    json.key("top").value(std::numeric_limits<std::uint64_t>::max());
    json.key("bottom").value(std::numeric_limits<std::int64_t>::min());
    json.key("half").number(0.5);
    json.key("nan").number(std::nan(""));
    json.key("inf").number(-std::numeric_limits<double>::infinity());
    json.key("list").begin_array().value(true).null().value("x").raw("{\"r\":1}").end_array();
    json.end_object();
    const auto parsed = nlohmann::json::parse(out);
    EXPECT_EQ(parsed, nlohmann::json::parse(
                          R"({"empty":[],"top":18446744073709551615,"bottom":-9223372036854775808,
                              "half":0.5,"nan":null,"inf":null,"list":[true,null,"x",{"r":1}]})"))
        << out;
  }
}

TEST(json_writer, exact_in_browsers_quotes_only_what_a_double_loses) {
  std::string out;
  json_writer json(out);
  json.exact_in_browsers().begin_array();
  json.value(std::uint64_t{1} << 53).value((std::uint64_t{1} << 53) - 1);
  json.value(-(std::int64_t{1} << 53)).value(-(std::int64_t{1} << 53) + 1);
  json.value(std::numeric_limits<std::uint64_t>::max()).raw("[18446744073709551615]");
  json.end_array();
  // Raw JSON is the caller's: it writes its own integers exact.
  EXPECT_EQ(out, R"(["9007199254740992",9007199254740991,"-9007199254740992",-9007199254740991,)"
                 R"("18446744073709551615",[18446744073709551615]])");
}

TEST(page_parts, axis_steps_are_one_two_five_with_ten_ticks_at_most) {
  const struct {
    std::uint64_t span, step;
  } cases[] = {
      // floor(span / step) reaches 10 at most
      {0, 1},   {10, 1},   {11, 2},   {21, 2},   {22, 5},
      {51, 5},  {55, 10},  {109, 10}, {110, 20}, {999'999, 100'000},
      {std::numeric_limits<std::uint64_t>::max(), 2'000'000'000'000'000'000},
  };
  for (const auto& c : cases) EXPECT_EQ(axis_step(c.span), c.step) << c.span;
}

TEST(page_parts, the_head_escapes_its_title_in_both_places) {
  std::string out;
  append_page_head(out, "a<b & \"c\">", ".own{}\n");
  const std::string escaped = "a&lt;b &amp; &quot;c&quot;&gt;";
  EXPECT_NE(out.find("<title>" + escaped + "</title>"), std::string::npos);
  EXPECT_NE(out.find(".own{}\n</style>"), std::string::npos);
  EXPECT_TRUE(out.ends_with("<h1>" + escaped)) << out;
  EXPECT_EQ(out.find("a<b"), std::string::npos);
}

std::vector<nlohmann::json> lines_of(const std::string& jsonl) {
  std::vector<nlohmann::json> rows;
  std::istringstream in(jsonl);
  for (std::string line; std::getline(in, line);) rows.push_back(nlohmann::json::parse(line));
  return rows;
}

TEST(table_rows, each_row_names_its_capture_and_keeps_wild_times) {
  const stats_record stats = one_click();
  std::vector<profile_entry> profile = checkpoints(0);
  profile.push_back(record(checkpoint_word(9), 8, 0));
  profile.push_back(record(checkpoint_word(9), 9, std::numeric_limits<std::uint64_t>::max()));
  capture_model model = model_of(&stats, profile);
  failure_line failure;
  failure.line = 4;
  failure.value = 0xe00002c2;
  failure.text = "kelvra: \x01 odd";
  model.harvests[0].failures.push_back(failure);
  gather_facts(model);

  table_rows rows;
  add_capture_rows(model, {"phones/a b.txt", "ab12"}, rows);
  const auto harvests = lines_of(rows.harvests);
  const auto records = lines_of(rows.records);
  const auto failures = lines_of(rows.failures);
  ASSERT_EQ(harvests.size(), 1u);
  ASSERT_EQ(records.size(), profile.size());
  ASSERT_EQ(failures.size(), 1u);
  for (const auto* table : {&harvests, &records, &failures})
    for (const nlohmann::json& row : *table) {
      EXPECT_EQ(row["capture"], "phones/a b.txt");
      EXPECT_EQ(row["capture_sha256"], "ab12");
      EXPECT_EQ(row["harvest"], 1);
    }
  const nlohmann::json& h = harvests[0];
  EXPECT_EQ(h["records"], profile.size());
  EXPECT_EQ(h["first_us"], 0u);
  EXPECT_EQ(h["last_us"], std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(h["span_us"], std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(h["finger_on_us"], 10'000u);
  ASSERT_EQ(h["clicks"].size(), 1u);
  EXPECT_EQ(h["clicks"][0]["down_to_asset_us"], 600u);
  EXPECT_EQ(h["clicks"][0]["up_to_asset_us"], 580u);
  EXPECT_EQ(h["clicks"][0]["held_us"], 100'000u);
  EXPECT_EQ(records.back()["timestamp"], std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(failures[0]["line"], 4u);
  EXPECT_EQ(failures[0]["text"], "kelvra: \x01 odd");
  EXPECT_TRUE(rows.unreadable.empty());

  add_unreadable_row({"gone.txt", ""}, {"gone.txt", "byte 3", "not a capture"}, rows);
  const auto unreadable = lines_of(rows.unreadable);
  ASSERT_EQ(unreadable.size(), 1u);
  EXPECT_EQ(unreadable[0]["capture"], "gone.txt");
  EXPECT_EQ(unreadable[0]["where"], "byte 3");
  EXPECT_EQ(unreadable[0]["fault"], "not a capture");
}

}  // namespace
}  // namespace inspect::test
