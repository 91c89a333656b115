// The clock pair taken back from a capture's calendar-time texts, in a zone
// with daylight saving (UTC-5, UTC-4 in summer), and the --timesync text.

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "inspect/capture_clock.h"
#include "liblog_zol/calendar_time.h"

namespace {

// Before anything reads the zone: the calendar texts are made once per
// second and kept.
const bool zone_set = setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1) == 0;

struct record_text {
  std::uint64_t timestamp;
  const char* text;
  // Microseconds since 1970 the recovered pair gives the record; 0: a fault.
  std::uint64_t expected;
};

std::uint64_t microseconds(std::uint64_t seconds, std::uint64_t fraction = 0) {
  return seconds * 1000000 + fraction;
}

TEST(capture_clock, recovers_the_instant_each_text_names) {
  ASSERT_TRUE(zone_set);
  const struct {
    const char* what;
    std::optional<int> year;
    std::vector<record_text> records;
  } cases[] = {
      {"standard time, year given", 2024,
       {{1000, "Mar 04 10:15:02.123456", microseconds(1709565302, 123456)},
        // The same pair carries on.
        {1000 + 42, "Mar 04 10:15:02.123498", microseconds(1709565302, 123498)}}},
      {"a leap day without a year: the latest leap year", std::nullopt,
       {{5, "Feb 29 12:00:00.000000", microseconds(1709226000)}}},
      {"a leap day in a year without one", 2023, {{5, "Feb 29 12:00:00.000000", 0}}},
      {"the hour skipped in spring", 2026, {{5, "Mar 08 02:30:00.000000", 0}}},
      // The hour repeated in autumn: an hour later the clock shows the same
      // text, which the first choice must still give.
      {"the hour repeated in autumn", 2026,
       {{0, "Nov 01 01:30:00.000000", microseconds(1793511000)},
        {3600000000, "Nov 01 01:30:00.000000", microseconds(1793514600)}}},
      {"a pair renewed between records", 2024,
       {{1000, "Mar 04 10:15:02.123456", microseconds(1709565302, 123456)},
        {2000, "Mar 04 10:15:05.000000", microseconds(1709565305)}}},
      {"not a calendar time", 2024, {{5, "Mar 4 10:15:02.123456", 0}}},
      {"no such month", 2024, {{5, "Mrz 04 10:15:02.123456", 0}}},
  };
  for (const auto& test : cases) {
    inspect::capture_clock clock(test.year);
    for (const record_text& record : test.records) {
      std::string fault;
      const bool recovered = clock.next_record(record.timestamp, record.text, fault);
      ASSERT_EQ(recovered, record.expected != 0) << test.what << ": " << fault;
      if (!recovered) {
        EXPECT_NE(fault.find(record.text), std::string::npos) << test.what;
        continue;
      }
      zol::timesync_pair pair;
      ASSERT_TRUE(clock.read(pair)) << test.what;
      EXPECT_EQ(zol::calendar_microseconds(record.timestamp, pair), record.expected)
          << test.what << ", " << record.text;
    }
  }
}

TEST(capture_clock, a_record_without_text_has_no_clock) {
  inspect::capture_clock clock(2024);
  std::string fault;
  ASSERT_TRUE(clock.next_record(1000, "Mar 04 10:15:02.123456", fault));
  ASSERT_TRUE(clock.next_record(2000, std::nullopt, fault));
  zol::timesync_pair pair;
  EXPECT_FALSE(clock.read(pair));
}

TEST(capture_clock, timesync_option_text) {
  const struct {
    const char* text;
    std::optional<zol::timesync_pair> pair;
  } cases[] = {
      {"5,6", zol::timesync_pair{5, 6}},
      {"-5,1700000000000000000", zol::timesync_pair{-5, 1700000000000000000}},
      {"5", std::nullopt},     {"5,x", std::nullopt}, {",6", std::nullopt},
      {"5,6,7", std::nullopt}, {"5, 6", std::nullopt},
      {"5,9223372036854775808", std::nullopt},
  };
  for (const auto& test : cases) EXPECT_EQ(inspect::parse_timesync(test.text), test.pair) << test.text;
}

}  // namespace
