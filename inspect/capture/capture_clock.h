#pragma once

// The clock pair of a capture, taken back from its calendar-time texts.
//
// The collector prints a record's calendar time as the local
// "%b %d %T.%06lld" text of (timestamp × 1000 + calendar − tmx) / 1000 µs,
// the sum taken in unsigned 64-bit arithmetic. The text depends only on the
// offset calendar − tmx modulo 2^64, and that offset may put a record in any
// year the sum reaches: 1970 to 2554 in UTC (the top falls in July, so no
// zone reaches 2555), and 1969 west of UTC. A text names no year and only
// its microsecond, so one text allows one range of 1000 offsets per year in
// which its local time exists (two where the clocks go back); the texts of
// one pair share an offset.
// Offsets that give every text alike are equivalent: the year of the first
// text and the time zone pick among them.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/capture/zone_rules.h"
#include "liblog_zol/clock_source.h"

namespace inspect {

// Offsets start, start + 1, ..., start + length − 1, modulo 2^64 (a range
// may wrap past 2^64 − 1 to 0). 1 ≤ length ≤ 1000.
struct offset_range {
  std::uint64_t start = 0;
  std::uint32_t length = 0;

  // A pair with this range's first offset: tmx is the timestamp in
  // nanoseconds, calendar tmx + start, both modulo 2^64 as signed numbers.
  zol::timesync_pair pair(std::uint64_t timestamp) const noexcept;
  friend bool operator==(const offset_range&, const offset_range&) = default;
};

// Which of equivalent offsets to take: the one that puts the first text in
// `year` (then the year before, the year after, and outwards), or, without
// one, in `current_year` or the latest year back from it (then later ones).
// The current year is handed in: only the command reads the system clock.
struct year_preference {
  std::optional<int> year;
  int current_year = 1970;
};

// One record's calendar-time text and where it stands in the input.
struct timed_text {
  std::uint64_t timestamp = 0;
  std::string_view text;
  std::uint64_t line = 0;
};

// "Mar 04 10:15:02.123456": a month of the C locale's, two-digit day, hour,
// minute and second, six-digit fraction.
bool is_calendar_text(std::string_view text);

// Narrows `range` to the offsets under which `timestamp` prints `text` in
// `zone`. False, with `range` untouched, when none does.
bool narrow_range(offset_range& range, std::uint64_t timestamp, std::string_view text,
                  const zone_rules& zone);

// Every range under which `timestamp` prints `text` in `zone`, the preferred
// first (of a year's two, the earlier instant); empty when the text is no
// calendar time or names no local time there.
std::vector<offset_range> text_ranges(std::uint64_t timestamp, std::string_view text,
                                      const year_preference& preference, const zone_rules& zone);

// Texts that one range gives, in input order.
struct clock_segment {
  std::uint64_t first_line = 0;
  std::uint64_t last_line = 0;
  std::size_t texts = 0;
  offset_range range;
  std::uint64_t first_timestamp = 0;  // of the segment's first text
  zol::timesync_pair pair() const noexcept { return range.pair(first_timestamp); }
};

struct recovered_clock {
  // Every segment, in input order: one when a single pair gives every text
  // (a phone has one pair), more where the texts need a pair renewed or were
  // edited. None without a readable text.
  std::vector<clock_segment> segments;
  // The segment of the most texts (the first of equals).
  std::size_t main = 0;
  // Lines whose text is no calendar time, or no local time in the zone.
  std::vector<std::uint64_t> unreadable;
  // The segment each text's record is shown with, by line, in input order:
  // a text that gives no offset keeps the segment before it.
  struct text_segment {
    std::uint64_t line = 0;
    std::uint32_t segment = 0;
  };
  std::vector<text_segment> segment_of;

  std::optional<zol::timesync_pair> pair() const;
  bool one_pair() const noexcept { return segments.size() <= 1 && unreadable.empty(); }
};

// The offsets of a whole input's texts: one range for all when there is one
// (the preferred of equivalent ones), else the segments a clock_follower
// finds.
recovered_clock recover_clock(std::span<const timed_text> texts, const year_preference& preference,
                              const zone_rules& zone);

// Record by record, for inputs read as a stream: starts from the range that
// recover_clock gives the texts at the start of the input, narrows it with
// each text, and where a text needs another offset takes up the range of an
// earlier segment that gives it, else the text's range nearest to the one
// before. recover_clock finds its segments the same way.
class clock_follower final : public zol::clock_source {
 public:
  clock_follower(const year_preference& preference, const zone_rules& zone,
                 std::span<const timed_text> first_texts);

  // The record about to be decoded, with its line's text if it has one.
  // False, with `note` saying why, when the text gives no offset here: the
  // record then keeps the range before it.
  bool next_record(std::uint64_t timestamp, std::optional<std::string_view> text,
                   std::uint64_t line, std::string& note);

  // The pair for the record last given; false when it had no text or no
  // range is known yet.
  bool read(zol::timesync_pair& pair) override;

  const std::vector<clock_segment>& segments() const noexcept { return segments_; }
  const std::vector<std::uint64_t>& unreadable() const noexcept { return unreadable_; }
  // The segment of the record last given; none before the first.
  std::optional<std::size_t> current_segment() const noexcept {
    return segments_.empty() ? std::nullopt : std::optional(current_);
  }

 private:
  year_preference preference_;
  const zone_rules* zone_;
  std::vector<clock_segment> segments_;
  std::size_t current_ = 0;  // in segments_
  std::vector<std::uint64_t> unreadable_;
  bool has_text_ = false;
};

// "TMX,CALENDAR": the timesync property's two numbers, signed 64-bit.
std::optional<zol::timesync_pair> parse_timesync(std::string_view text);

}  // namespace inspect
