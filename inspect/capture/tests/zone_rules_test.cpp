// Zones as data: POSIX rules, the tz database's zones past the years their
// files list, and the instants a local time names. Expected instants are
// worked out by hand from the zones' published rules.

#include "inspect/capture/zone_rules.h"

#include <gtest/gtest.h>

#include <chrono>
#include <tuple>
#include <vector>

namespace inspect {
namespace {

// Seconds since 1970 of a UTC time, or of a local time counted as if UTC.
std::int64_t at(int y, unsigned m, unsigned d, int hh = 0, int mm = 0, int ss = 0) {
  using namespace std::chrono;
  const sys_days day{year{y} / month{m} / std::chrono::day{d}};
  return day.time_since_epoch().count() * 86'400 + hh * 3600 + mm * 60 + ss;
}

constexpr std::int32_t h = 3600;

struct offset_row {
  std::int64_t instant;
  std::int32_t offset;
};

void expect_offsets(const zone_rules& zone, const std::vector<offset_row>& rows) {
  for (const offset_row& r : rows) EXPECT_EQ(zone.utc_offset(r.instant), r.offset) << r.instant;
}

TEST(zone_rules, posix_rules_give_each_instant_its_offset) {
  const struct {
    const char* rule;
    std::vector<offset_row> rows;
  } zones[] = {
      {"EST5EDT,M3.2.0,M11.1.0",
       {{at(2024, 3, 10, 6, 59, 59), -5 * h}, {at(2024, 3, 10, 7), -4 * h},
        {at(2024, 11, 3, 5, 59, 59), -4 * h}, {at(2024, 11, 3, 6), -5 * h},
        {at(2554, 7, 1), -4 * h}, {at(1969, 12, 31), -5 * h}}},
      {"JST-9", {{at(1970, 1, 1), 9 * h}, {at(2554, 7, 1), 9 * h}}},
      // The rule Lord Howe's file ends with: half an hour ahead from the
      // first Sunday of October, back on the first Sunday of April; in 2100
      // that is 4 April, 02:00 at +11.
      {"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
       {{at(2100, 1, 15), 11 * h}, {at(2100, 7, 15), 10 * h + 1800},
        {at(2100, 4, 3, 14, 59, 59), 11 * h}, {at(2100, 4, 3, 15), 10 * h + 1800}}},
      // The last week, a time of day past midnight, Julian days.
      {"EST5EDT,M3.5.0/-1,J300/26",
       {{at(2024, 3, 31, 3, 59, 59), -5 * h}, {at(2024, 3, 31, 4), -4 * h},
        {at(2024, 10, 28, 5, 59, 59), -4 * h}, {at(2024, 10, 28, 6), -5 * h}}},
      {"<-03>3", {{at(2024, 1, 1), -3 * h}}},
  };
  for (const auto& z : zones) {
    SCOPED_TRACE(z.rule);
    const std::unique_ptr<const zone_rules> zone = posix_zone(z.rule);
    ASSERT_TRUE(zone);
    expect_offsets(*zone, z.rows);
  }
  for (const char* rule : {"", "EST", "E5", "EST5EDT,M13.1.0,M11.1.0", "EST5EDT,M3.2.0",
                           "EST5EDT,M3.2.0,M11.1.0,", "<+1030-10:30", "EST25", "EST5EDT,M3.0.0,J0",
                           "JST-9 ", "XXX3EDP024,0,J364/23", "XXX-24",
                           "<-03>-023<-02>,M3.5.2,M12.5.1"})
    EXPECT_FALSE(posix_zone(rule)) << rule;
}

TEST(zone_rules, database_zones_follow_their_rule_past_the_years_their_files_list) {
  const struct {
    const char* name;
    std::vector<offset_row> rows;
  } zones[] = {
      {"Asia/Tokyo", {{at(2026, 3, 14), 9 * h}, {at(2554, 7, 1), 9 * h}}},
      {"America/New_York",
       {{at(2024, 3, 10, 6, 59, 59), -5 * h}, {at(2024, 3, 10, 7), -4 * h},
        {at(2100, 7, 1), -4 * h}, {at(2100, 1, 1), -5 * h}, {at(2554, 7, 1), -4 * h}}},
      {"Australia/Lord_Howe",
       {{at(2024, 4, 6, 14, 59, 59), 11 * h}, {at(2024, 4, 6, 15), 10 * h + 1800},
        {at(2100, 1, 15), 11 * h}, {at(2100, 7, 15), 10 * h + 1800}}},
      {"UTC", {{at(2024, 7, 1), 0}}},
  };
  for (const auto& z : zones) {
    SCOPED_TRACE(z.name);
    const zone_rules* zone = find_zone(z.name);
    ASSERT_NE(zone, nullptr);
    EXPECT_EQ(find_zone(z.name), zone);
    EXPECT_EQ(zone_named(z.name), zone);
    expect_offsets(*zone, z.rows);
  }
  for (const char* name : {"Mars/Olympus", "asia/tokyo", "../../etc/passwd", "Asia/Tokyo\n",
                           "/usr/share/zoneinfo/UTC"})
    EXPECT_EQ(zone_named(name), nullptr) << name;
  EXPECT_EQ(zone_named(""), &process_zone());
}

TEST(zone_rules, a_local_time_names_none_one_or_two_instants) {
  const struct {
    const char* zone;
    std::int64_t local;
    std::vector<std::int64_t> instants;
  } rows[] = {
      {"America/New_York", at(2024, 6, 1, 12), {at(2024, 6, 1, 16)}},
      {"America/New_York", at(2024, 3, 10, 2, 30), {}},
      {"America/New_York", at(2024, 11, 3, 1, 30), {at(2024, 11, 3, 5, 30), at(2024, 11, 3, 6, 30)}},
      {"America/New_York", at(2100, 11, 7, 1, 30), {at(2100, 11, 7, 5, 30), at(2100, 11, 7, 6, 30)}},
      // Lord Howe goes back half an hour, 02:00 to 01:30, and forward 02:00
      // to 02:30.
      {"Australia/Lord_Howe", at(2024, 4, 7, 1, 45), {at(2024, 4, 6, 14, 45), at(2024, 4, 6, 15, 15)}},
      {"Australia/Lord_Howe", at(2024, 4, 7, 2, 0), {at(2024, 4, 6, 15, 30)}},
      {"Australia/Lord_Howe", at(2024, 10, 6, 2, 15), {}},
      {"Asia/Tokyo", at(2026, 3, 14, 9), {at(2026, 3, 14)}},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.zone);
    std::int64_t instants[2];
    const std::size_t count = local_instants(*find_zone(r.zone), r.local, instants);
    EXPECT_EQ(std::vector<std::int64_t>(instants, instants + count), r.instants) << r.local;
  }
}

// Standard time ten hours east, "daylight" an hour west, changing on January's
// first Monday and back on January 1st: hours apart in 2024, when the 1st is a
// Monday, days apart in 2025. The offset falls eleven hours and rises again;
// a local time that names two instants names them in order.
TEST(zone_rules, instants_of_a_local_time_come_in_order_when_changes_lie_close) {
  const std::unique_ptr<const zone_rules> zone = posix_zone("<+05>-10<+1[>1,M1.1.1,J1");
  ASSERT_TRUE(zone);
  std::size_t pairs = 0;
  for (std::int64_t local = at(2023, 12, 25); local < at(2025, 1, 15); local += 900) {
    std::int64_t instants[2];
    const std::size_t count = local_instants(*zone, local, instants);
    for (std::size_t i = 0; i < count; ++i)
      EXPECT_EQ(instants[i] + zone->utc_offset(instants[i]), local) << local;
    if (count == 2) {
      ++pairs;
      EXPECT_LT(instants[0], instants[1]) << local;
    }
  }
  EXPECT_GT(pairs, 0U);
}

TEST(zone_rules, local_time_is_the_instant_shifted_by_its_offset) {
  const zone_rules& lord_howe = *find_zone("Australia/Lord_Howe");
  const struct {
    std::int64_t instant;
    int year, month, day, hour, minute, second;
    long offset;
  } rows[] = {
      {at(2024, 4, 6, 14, 59, 59), 124, 3, 7, 1, 59, 59, 11 * h},
      {at(2024, 4, 6, 15), 124, 3, 7, 1, 30, 0, 10 * h + 1800},
      {at(2554, 7, 21, 23, 34, 33), 654, 6, 22, 10, 4, 33, 10 * h + 1800},
  };
  for (const auto& r : rows) {
    std::tm local{};
    ASSERT_TRUE(lord_howe.local_time(r.instant, local));
    EXPECT_EQ(std::tie(local.tm_year, local.tm_mon, local.tm_mday, local.tm_hour, local.tm_min,
                       local.tm_sec, local.tm_gmtoff),
              std::tie(r.year, r.month, r.day, r.hour, r.minute, r.second, r.offset))
        << r.instant;
  }
}

}  // namespace
}  // namespace inspect
