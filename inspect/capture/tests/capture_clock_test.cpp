// The clock pair taken back from calendar-time texts, checked against the
// zone's own rule and against offset-by-offset searches.

#include "inspect/capture/capture_clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "liblog_zol/calendar_time.h"

namespace inspect {
namespace {

// 5 h behind UTC, 4 from the second Sunday of March to the first of
// November, every year to 2554.
const std::unique_ptr<const zone_rules> eastern = posix_zone("EST5EDT,M3.2.0,M11.1.0");
const zone_rules& zone = *eastern;

constexpr std::uint64_t top = 0xffffffffffffffff;
constexpr std::uint64_t last_us = top / 1000;
constexpr std::uint64_t second_ns = 1'000'000'000;
constexpr std::uint64_t day_ns = 86'400 * second_ns;
constexpr std::uint64_t e18 = 1'000'000'000 * second_ns;

std::uint64_t days_from_1970(int y, unsigned m, unsigned d) {
  using namespace std::chrono;
  const sys_days days{year{y} / month{m} / day{d}};
  return static_cast<std::uint64_t>(days.time_since_epoch().count());
}

// Microseconds since 1970 of a local time `behind` hours behind UTC.
std::uint64_t local_us(int y, unsigned m, unsigned d, int hh, int mm, int ss, int us, int behind) {
  const auto seconds = static_cast<std::uint64_t>((hh + behind) * 3600 + mm * 60 + ss);
  return (days_from_1970(y, m, d) * 86400 + seconds) * 1'000'000 + static_cast<std::uint64_t>(us);
}

std::string text_of(std::uint64_t microseconds) {
  zol::calendar_text made;
  EXPECT_TRUE(zol::make_calendar_text(microseconds, made, zone));
  return std::string(made.view());
}

std::string text_at(std::uint64_t timestamp, std::uint64_t offset) {
  return text_of((timestamp * 1000 + offset) / 1000);
}

year_preference given(int year) { return {.year = year, .current_year = 1970}; }
year_preference current(int year) { return {.year = std::nullopt, .current_year = year}; }

bool contains(const offset_range& range, std::uint64_t offset) {
  return offset - range.start < range.length;
}

// Lines 1, 2, ...: made from an offset or given as they are.
struct capture {
  std::vector<std::uint64_t> timestamps;
  std::vector<std::string> lines;
  void add(std::uint64_t timestamp, std::uint64_t offset) {
    add(timestamp, text_at(timestamp, offset));
  }
  void add(std::uint64_t timestamp, std::string text) {
    timestamps.push_back(timestamp);
    lines.push_back(std::move(text));
  }
  std::vector<timed_text> texts() const {
    std::vector<timed_text> texts;
    for (std::size_t i = 0; i < lines.size(); ++i)
      texts.push_back({timestamps[i], lines[i], i + 1});
    return texts;
  }
  void expect_line(const zol::timesync_pair& pair, std::size_t i) const {
    EXPECT_EQ(text_of(zol::calendar_microseconds(timestamps[i], pair)), lines[i]) << i + 1;
  }
};

// 2024-03-04 10:15:02.123456700 EST against 1000 s of processor time.
const std::uint64_t march_us = local_us(2024, 3, 4, 10, 15, 2, 123456, 5);
const std::uint64_t march = march_us * 1000 + 700 - 1000 * second_ns;

TEST(capture_clock, narrow_range_keeps_the_offsets_that_print_the_text) {
  const std::uint64_t zero = 0;
  struct row {
    const char* name;
    std::uint64_t timestamp;
    offset_range range;
    std::size_t pieces;
  } rows[] = {
      {"crosses a microsecond", 5'000'000'000, {march - 300, 1000}, 2},
      {"offsets wrap past 2^64-1", march_us, {top - 299, 1000}, 2},
      {"timestamp x 1000 wraps", top, {march_us * 1000 + 1250, 1000}, 2},
      {"sum wraps", last_us, {500'000'000'000'000'000, 1000}, 2},
      {"top, last microsecond and 0", 12345, {top - 699 - 12'345'000, 1000}, 3},
      {"last microsecond alone", 0, {last_us * 1000, 616}, 1},
      {"one offset", 7, {march, 1}, 1},
      {"calendar 0", 987'654'325'588, {zero - 987'654'321'987'654 - 500, 1000}, 2},
      {"calendar -2e18, tmx 4e18", 9'000'000'000'000'000, {zero - 6 * e18 - 123, 1000}, 2},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.name);
    std::vector<std::string> texts;
    for (std::uint32_t i = 0; i < r.range.length; ++i) {
      const std::string text = text_at(r.timestamp, r.range.start + i);
      if (texts.empty() || texts.back() != text) texts.push_back(text);
    }
    EXPECT_EQ(texts.size(), r.pieces);
    texts.push_back(text_of(march_us + 1'000'000));
    texts.push_back("Mar 4 10:15:02.123456");
    for (const std::string& text : texts) {
      std::vector<std::uint64_t> expected;
      for (std::uint32_t i = 0; i < r.range.length; ++i)
        if (text_at(r.timestamp, r.range.start + i) == text) expected.push_back(r.range.start + i);
      offset_range range = r.range;
      ASSERT_EQ(narrow_range(range, r.timestamp, text, zone), !expected.empty()) << text;
      const auto length = static_cast<std::uint32_t>(expected.size());
      EXPECT_EQ(range, (expected.empty() ? r.range : offset_range{expected.front(), length}));
      for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(expected[i], expected[0] + i);
    }
  }
}

// Years in the preferred order, sorted by what each one is preferred for.
std::vector<int> years_in_order(const year_preference& preference) {
  std::vector<int> years(2554 - 1969 + 1);
  std::iota(years.begin(), years.end(), 1969);
  const auto key = [&](int y) {
    const bool later = y > preference.year.value_or(preference.current_year);
    if (preference.year) return std::pair{std::abs(y - *preference.year), later ? 1 : 0};
    return std::pair{later ? 1 : 0, later ? y : -y};
  };
  std::stable_sort(years.begin(), years.end(), [&](int a, int b) { return key(a) < key(b); });
  return years;
}

// The microsecond a calendar text names in `year`, `behind` hours behind UTC.
std::uint64_t local_us(int year, const std::string& text, int behind) {
  const auto field = [&](std::size_t at, std::size_t n) { return std::stoi(text.substr(at, n)); };
  const std::string months = "JanFebMarAprMayJunJulAugSepOctNovDec";
  const auto month = static_cast<unsigned>(months.find(text.substr(0, 3)) / 3 + 1);
  return local_us(year, month, static_cast<unsigned>(field(4, 2)),
                  field(7, 2), field(10, 2), field(13, 2), field(16, 6), behind);
}

// Per year, the standard and the daylight reading of the text's local time
// that print it back. Instants before 1970 wrap past last_us.
std::vector<std::vector<offset_range>> model_ranges(std::uint64_t timestamp,
                                                    const std::string& text,
                                                    const year_preference& preference) {
  std::vector<std::vector<offset_range>> per_year;
  for (const int year : years_in_order(preference)) {
    std::vector<offset_range> ranges;
    for (const int behind : {5, 4}) {
      const std::uint64_t us = local_us(year, text, behind);
      if (us > last_us || text_of(us) != text) continue;
      ranges.push_back({us * 1000 - timestamp * 1000, us == last_us ? 616u : 1000u});
    }
    if (!ranges.empty()) per_year.push_back(ranges);
  }
  return per_year;
}

TEST(capture_clock, text_ranges_every_year_the_local_time_exists_in_preferred_order) {
  struct row {
    const char* text;
    year_preference preference;
    int first_year, behind;  // of the first range, by hand; 0: not checked
    std::size_t years;       // with a range
  } rows[] = {
      {"Mar 04 10:15:02.123456", given(2024), 2024, 5, 585},
      {"Mar 04 10:15:02.123456", given(1900), 1970, 5, 585},
      {"Mar 04 10:15:02.123456", given(3000), 2554, 5, 585},
      {"Jun 15 12:00:00.000000", current(2024), 2024, 4, 585},
      {"Jun 15 12:00:00.000000", current(1960), 1970, 4, 585},
      {"Jun 15 12:00:00.000000", current(3000), 2554, 4, 585},
      {"Feb 29 12:00:00.000000", current(2023), 2020, 5, 142},
      {"Mar 10 02:30:00.000000", current(2024), 2023, 5, 502},  // skipped in 2024
      {"Nov 03 01:30:00.000000", current(2024), 0, 0, 584},     // twice in 2024
      {"Dec 31 19:00:00.000005", current(1969), 1969, 5, 585},
      {"Dec 31 19:00:00.000005", given(1900), 1969, 5, 585},
      {"Jul 21 19:34:33.709551", given(2554), 2554, 4, 585},  // the last microsecond
      {"Jul 21 19:34:33.709552", given(2554), 2553, 4, 584},
      {"Feb 30 10:00:00.000000", current(2024), 0, 0, 0},
  };
  const std::uint64_t timestamp = 77'000'000'123;
  for (const row& r : rows) {
    SCOPED_TRACE(r.text);
    const std::vector<offset_range> got = text_ranges(timestamp, r.text, r.preference, zone);
    const auto per_year = model_ranges(timestamp, r.text, r.preference);
    EXPECT_EQ(per_year.size(), r.years);
    std::size_t at = 0;
    for (const auto& ranges : per_year) {
      ASSERT_LE(at + ranges.size(), got.size());
      const auto from = got.begin() + static_cast<std::ptrdiff_t>(at);
      EXPECT_TRUE(std::is_permutation(ranges.begin(), ranges.end(), from)) << "range " << at;
      at += ranges.size();
    }
    EXPECT_EQ(at, got.size());
    if (r.first_year != 0) {
      const std::uint64_t first_us = local_us(r.first_year, r.text, r.behind);
      EXPECT_EQ(got.at(0).start, first_us * 1000 - timestamp * 1000);
    }
  }
  EXPECT_TRUE(text_ranges(5, "Mar 4 10:15:02.123456", current(2024), zone).empty());

  // The hour that comes twice: the earlier reading first.
  const auto got = text_ranges(0, "Nov 03 01:30:00.000000", given(2024), zone);
  const std::uint64_t edt = local_us(2024, 11, 3, 1, 30, 0, 0, 4) * 1000;
  EXPECT_EQ(got.at(0).start, edt);
  EXPECT_EQ(got.at(1).start, edt + 3600 * second_ns);
}

TEST(capture_clock, recover_clock_one_pair_reproduces_every_text) {
  constexpr std::int64_t e9 = 1'000'000'000, e12 = 1000 * e9, e15 = 1000 * e12, i18 = 1000 * e15;
  struct row {
    const char* name;
    zol::timesync_pair pair;
    std::vector<std::uint64_t> timestamps;
    int first_year;  // of the first text, by hand
  } rows[] = {
      {"sentinel, wild and early timestamps", {e12, static_cast<std::int64_t>(march) + e12},
       {2'000'000'000, 2'001'000'123, 2'060'000'000'017, top, 5'456 * e9, 999'999'999}, 2024},
      {"before tmx wraps to 2554", {7'200 * e9, 3'600 * e9}, {7'200'000'000, 3'000'000'000, 0, top},
       1969},
      {"calendar 0", {987'654'321'987'654, 0},
       {987'654'321'988, 987'654'326'988, 987'654'321'987, top, 9'876'543'219'880}, 1969},
      {"negative calendar", {4 * i18, -2 * i18},
       {7'000 * e12, 7'000 * e12 + 1, top, 1'000 * e12, 18'000 * e12}, 2001},
      {"calendar before its tmx", {9 * i18, 1'700 * e15}, {9'000 * e12, top, 1}, 2023},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.name);
    const std::uint64_t offset =
        static_cast<std::uint64_t>(r.pair.calendar) - static_cast<std::uint64_t>(r.pair.tmx);
    capture c;
    for (const std::uint64_t timestamp : r.timestamps) c.add(timestamp, offset);
    const std::vector<timed_text> texts = c.texts();
    for (const year_preference& preference : {given(r.first_year), current(2030)}) {
      const recovered_clock clock = recover_clock(texts, preference, zone);
      ASSERT_EQ(clock.segments.size(), 1u);
      EXPECT_TRUE(clock.one_pair());
      const clock_segment& segment = clock.segments[0];
      EXPECT_EQ(std::tuple(segment.first_line, segment.last_line, segment.texts),
                std::tuple(1u, texts.size(), texts.size()));
      for (std::size_t i = 0; i < texts.size(); ++i) c.expect_line(*clock.pair(), i);
      EXPECT_TRUE(!preference.year || contains(segment.range, offset));
    }
  }
}

TEST(capture_clock, recover_clock_takes_the_year_preferred_among_equivalent_pairs) {
  const auto offset = [](int y, unsigned m, unsigned d, int hh, int mm, int ss, int us, int b) {
    return local_us(y, m, d, hh, mm, ss, us, b) * 1000 - 3000 * second_ns;
  };
  const auto years = [](int from, int to, unsigned m, unsigned d) {
    return (days_from_1970(to, m, d) - days_from_1970(from, m, d)) * day_ns;
  };
  const std::uint64_t june = offset(2021, 6, 15, 9, 0, 0, 250'000, 4);
  const std::uint64_t leap = offset(2020, 2, 29, 9, 0, 0, 0, 5);
  const std::uint64_t dst = offset(2024, 3, 10, 1, 59, 59, 500'000, 5);
  const std::uint64_t new_year = offset(2023, 12, 31, 23, 59, 59, 500'000, 5);
  const std::uint64_t leap_eve = offset(2024, 2, 28, 23, 59, 59, 500'000, 5);
  const std::vector<std::uint64_t> one_second = {0, 1'000'000};
  const std::vector<std::uint64_t> over_leap_day = {0, 1'000'000, 86'401'000'000};
  struct row {
    const char* name;
    std::uint64_t offset;
    std::vector<std::uint64_t> after;  // µs after the first text
    year_preference preference;
    std::uint64_t expected;
  } rows[] = {
      {"June, the year given", june, one_second, given(2021), june},
      {"June, an earlier year", june, one_second, given(2019), june - years(2019, 2021, 6, 15)},
      {"June, the current year", june, one_second, current(2024), june + years(2021, 2024, 6, 15)},
      {"leap day, latest back", leap, {0}, current(2023), leap},
      {"leap day, nearest before", leap, {0}, given(2021), leap},
      {"leap day, nearest after", leap, {0}, given(2023), leap + years(2020, 2024, 2, 29)},
      {"into daylight saving", dst, one_second, current(2025), dst},
      {"into daylight saving, 2020", dst, one_second, given(2020), dst - years(2019, 2024, 3, 10)},
      {"new year", new_year, one_second, current(2025), new_year + years(2023, 2025, 12, 31)},
      {"over a leap day", leap_eve, over_leap_day, current(2026), leap_eve},
      {"over a leap day, 2030", leap_eve, over_leap_day, given(2030),
       leap_eve + years(2024, 2028, 2, 28)},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.name);
    capture c;
    for (const std::uint64_t after : r.after) c.add(3'000'000'000 + after, r.offset);
    const recovered_clock clock = recover_clock(c.texts(), r.preference, zone);
    ASSERT_EQ(clock.segments.size(), 1u);
    EXPECT_TRUE(contains(clock.segments[0].range, r.expected));
    for (std::size_t i = 0; i < c.lines.size(); ++i) c.expect_line(*clock.pair(), i);
  }
}

TEST(capture_clock, recover_clock_narrows_inside_a_microsecond_where_sums_wrap) {
  // The calendar lies 700 ns into its microsecond. A sum that wraps 2^64 k
  // times more than another starts its microseconds k × 616 ns later.
  const std::uint64_t timestamps[] = {2'000'000'000, 17'000'000'000'000'000, top,
                                      55'000'000'000'000'000};  // wrap 0, 1, 1000, 3 times
  const offset_range expected[] = {
      {march - 700, 1000}, {march - 84, 384}, {march - 84, 384}, {march - 84, 232}};
  capture c;
  for (std::size_t i = 0; i < std::size(timestamps); ++i) {
    c.add(timestamps[i], march);
    const recovered_clock clock = recover_clock(c.texts(), given(2024), zone);
    ASSERT_EQ(clock.segments.size(), 1u);
    EXPECT_EQ(clock.segments[0].range, expected[i]) << i;
  }
}

struct segment_row {
  std::uint64_t first_line, last_line, texts, offset;
};

void expect_segments(const std::vector<clock_segment>& got,
                     const std::vector<segment_row>& expected) {
  ASSERT_EQ(got.size(), expected.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    const segment_row& e = expected[i];
    EXPECT_EQ(std::tie(got[i].first_line, got[i].last_line, got[i].texts),
              std::tie(e.first_line, e.last_line, e.texts)) << i;
    EXPECT_TRUE(contains(got[i].range, e.offset)) << i;
  }
}

TEST(capture_clock, recover_clock_and_clock_follower_segment_renewed_pairs_and_edited_lines) {
  const std::uint64_t m = march, renewed = march + 1'000'000, edited = march + 120 * second_ns;
  struct row {
    const char* name;
    std::vector<std::uint64_t> offsets;  // 0: the next unreadable text instead
    std::vector<std::string> unreadable_texts;
    std::vector<segment_row> segments;
    std::size_t main;
    std::vector<std::uint64_t> unreadable;
  } rows[] = {
      {"renewed mid-way", {m, m, m, renewed, renewed, renewed, renewed}, {},
       {{1, 3, 3, m}, {4, 7, 4, renewed}}, 1, {}},
      {"one edited line", {m, m, m, edited, m, m, m, m}, {},
       {{1, 3, 3, m}, {4, 4, 1, edited}, {5, 8, 4, m}}, 2, {}},
      {"edited, the first of equals", {m, m, edited, m, m}, {},
       {{1, 2, 2, m}, {3, 3, 1, edited}, {4, 5, 2, m}}, 0, {}},
      {"unreadable texts", {0, m, 0, m, 0, 0, m, 0},
       {"Mar 4 10:15:02.123456", "Feb 30 10:00:00.000000", "", "Mar 04 24:00:00.000000",
        "Mar 04 10:15:02.12345x"},
       {{2, 7, 3, m}}, 0, {1, 3, 5, 6, 8}},
      {"unreadable and renewed", {m, 0, renewed, renewed}, {"Apr 31 00:00:00.000000"},
       {{1, 1, 1, m}, {3, 4, 2, renewed}}, 1, {2}},
  };
  for (const row& r : rows) {
    SCOPED_TRACE(r.name);
    capture c;
    auto unreadable = r.unreadable_texts.begin();
    for (std::size_t i = 0; i < r.offsets.size(); ++i) {
      const std::uint64_t timestamp = 2'000'000'000 + i * 1'000'003;
      if (r.offsets[i] != 0) c.add(timestamp, r.offsets[i]);
      if (r.offsets[i] == 0) c.add(timestamp, *unreadable++);
    }
    const recovered_clock clock = recover_clock(c.texts(), given(2024), zone);
    expect_segments(clock.segments, r.segments);
    EXPECT_EQ(clock.main, r.main);
    EXPECT_EQ(clock.unreadable, r.unreadable);
    EXPECT_FALSE(clock.one_pair());
    ASSERT_TRUE(clock.pair());
    const clock_segment& main = clock.segments[r.main];
    EXPECT_EQ(clock.pair(), main.pair());
    for (std::uint64_t i = main.first_line - 1; i < main.last_line; ++i)
      if (r.offsets[i] != 0) c.expect_line(*clock.pair(), i);

    const std::vector<timed_text> texts = c.texts();
    clock_follower follower(given(2024), zone, texts);
    std::string note;
    for (const timed_text& t : texts) follower.next_record(t.timestamp, t.text, t.line, note);
    ASSERT_EQ(follower.segments().size(), clock.segments.size());
    for (std::size_t i = 0; i < clock.segments.size(); ++i) {
      const clock_segment& a = follower.segments()[i];
      const clock_segment& b = clock.segments[i];
      EXPECT_EQ(std::tie(a.first_line, a.last_line, a.texts, a.range, a.first_timestamp),
                std::tie(b.first_line, b.last_line, b.texts, b.range, b.first_timestamp)) << i;
    }
    EXPECT_EQ(follower.unreadable(), clock.unreadable);
  }
  EXPECT_FALSE(recover_clock({}, {}, zone).pair());
}

TEST(capture_clock, clock_follower_follows_renewed_pairs_and_resumes_after_an_edited_line) {
  const std::uint64_t m = march, renewed = march + 1'000'000, edited = march + 120 * second_ns;
  const std::uint64_t offsets[] = {m, m, m, edited, m, m, renewed, renewed, renewed};
  capture c;
  // Line 3's sum wraps: it narrows the first range inside its microsecond.
  for (std::size_t i = 0; i < std::size(offsets); ++i)
    c.add(i == 2 ? 17'000'000'000'000'000 : 2'000'000'000 + i * 1'000'003, offsets[i]);
  const std::vector<timed_text> texts = c.texts();

  clock_follower follower(given(2024), zone, std::span(texts).first(2));
  std::string note;
  zol::timesync_pair pair;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_TRUE(follower.next_record(texts[i].timestamp, texts[i].text, texts[i].line, note));
    ASSERT_TRUE(follower.read(pair));
    c.expect_line(pair, i);
    EXPECT_TRUE(follower.next_record(texts[i].timestamp, std::nullopt, texts[i].line, note));
    EXPECT_FALSE(follower.read(pair));
  }
  const auto& segments = follower.segments();
  expect_segments(segments, {{1, 3, 3, m}, {4, 4, 1, edited}, {5, 6, 2, m}, {7, 9, 3, renewed}});
  EXPECT_EQ(segments[0].range, (offset_range{march - 84, 384}));
  EXPECT_EQ(segments[2].range, segments[0].range);

  // Started from texts the records do not fit: that range gets no segment.
  clock_follower other(given(2024), zone, std::span(texts).last(3));
  for (const timed_text& t : texts) other.next_record(t.timestamp, t.text, t.line, note);
  expect_segments(other.segments(),
                  {{1, 3, 3, m}, {4, 4, 1, edited}, {5, 6, 2, m}, {7, 9, 3, renewed}});
}

TEST(capture_clock, clock_follower_takes_the_nearest_of_a_texts_ranges) {
  // 01:30 on 3 Nov 2024 comes twice; a text an hour away tells which is
  // meant, and the renewed pair must stay in it, whichever mktime prefers.
  for (const int behind : {4, 5}) {
    SCOPED_TRACE(behind);
    const std::uint64_t offset =
        local_us(2024, 11, 3, 1, 30, 0, 0, behind) * 1000 - 10'000 * second_ns;
    capture c;
    c.add(10'000'000'000, offset);
    c.add(behind == 4 ? 6'400'000'000 : 13'600'000'000, offset);
    c.add(10'001'000'000, offset + 1'000'000);
    c.add(10'002'000'000, offset + 1'000'000);
    const std::vector<timed_text> texts = c.texts();
    clock_follower follower(given(2024), zone, std::span(texts).first(2));
    std::string note;
    for (const timed_text& text : texts)
      EXPECT_TRUE(follower.next_record(text.timestamp, text.text, text.line, note));
    expect_segments(follower.segments(), {{1, 2, 2, offset}, {3, 4, 2, offset + 1'000'000}});
  }
  // A leap day two years on: no year next to the range has it.
  const std::uint64_t before = local_us(2026, 3, 1, 0, 0, 10, 0, 5) * 1000 - 10'000 * second_ns;
  const std::uint64_t after = local_us(2028, 2, 29, 0, 0, 10, 0, 5) * 1000 - 10'001 * second_ns;
  capture c;
  c.add(10'000'000'000, before);
  c.add(10'001'000'000, after);
  const std::vector<timed_text> texts = c.texts();
  clock_follower follower(given(2026), zone, std::span(texts).first(1));
  std::string note;
  for (const timed_text& t : texts) follower.next_record(t.timestamp, t.text, t.line, note);
  expect_segments(follower.segments(), {{1, 1, 1, before}, {2, 2, 1, after}});
}

TEST(capture_clock, clock_follower_notes_unreadable_texts_and_keeps_its_range) {
  clock_follower follower(given(2024), zone, {});
  zol::timesync_pair pair;
  std::string note;
  EXPECT_FALSE(follower.read(pair));
  EXPECT_FALSE(follower.next_record(1, "garbage", 1, note));
  EXPECT_EQ(note, "calendar-time 'garbage' is not a \"Mon DD HH:MM:SS.ffffff\" time");
  EXPECT_FALSE(follower.read(pair));
  EXPECT_TRUE(follower.next_record(2'000'000'000, text_at(2'000'000'000, march), 2, note));
  ASSERT_TRUE(follower.read(pair));
  const zol::timesync_pair before = pair;
  EXPECT_FALSE(follower.next_record(2'000'000'001, "Feb 30 10:00:00.000000", 3, note));
  EXPECT_EQ(note, "calendar-time 'Feb 30 10:00:00.000000' is no local time in this time zone "
                  "(give the phone's with --zone)");
  ASSERT_TRUE(follower.read(pair));
  EXPECT_EQ(pair, before);
  EXPECT_EQ(follower.unreadable(), (std::vector<std::uint64_t>{1, 3}));
  expect_segments(follower.segments(), {{2, 2, 1, march}});
}

TEST(capture_clock, calendar_texts_and_timesync_pairs_are_read_strictly) {
  EXPECT_TRUE(is_calendar_text("Mar 04 10:15:02.123456"));
  EXPECT_TRUE(is_calendar_text("Dec 31 23:59:59.999999"));
  for (const char* text :
       {"Mar 4 10:15:02.123456", "mar 04 10:15:02.123456", "Mar 04 10:15:02.12345", "",
        "Mar 04 10:15:02.123456 ", "Mar-04 10:15:02.123456", "Mar 04 -1:15:02.123456",
        "Mar 04 10:15:02,123456", "Mar 04 10:15:02.+23456"})
    EXPECT_FALSE(is_calendar_text(text)) << text;

  using pair = std::optional<zol::timesync_pair>;
  const std::pair<const char*, pair> timesyncs[] = {
      {"5,6", zol::timesync_pair{5, 6}},
      {"-5,-6", zol::timesync_pair{-5, -6}},
      {"9223372036854775807,-9223372036854775808", zol::timesync_pair{INT64_MAX, INT64_MIN}},
      {"9223372036854775808,1", {}}, {"1,-9223372036854775809", {}}, {"5, 6", {}}, {"5 ,6", {}},
      {"5", {}}, {",6", {}}, {"5,", {}}, {"5,6,7", {}}, {"+5,6", {}}, {"5,6 ", {}}, {"0x5,6", {}},
      {"", {}}};
  for (const auto& [text, expected] : timesyncs) EXPECT_EQ(parse_timesync(text), expected) << text;
}

}  // namespace
}  // namespace inspect
