#include "inspect/capture/capture_clock.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <limits>


namespace inspect {
namespace {

constexpr std::uint64_t last_nanosecond = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t last_microsecond = last_nanosecond / 1000;
// The last microsecond is cut short by 2^64: it starts here, not 1000 before.
constexpr std::uint64_t last_microsecond_start = last_microsecond * 1000;

// The local years a sum can fall in, whatever the zone: it starts at
// 1970-01-01 00:00 UTC and ends in July 2554.
constexpr int first_year = 1969;
constexpr int last_year = 2554;

constexpr std::array<std::string_view, 12> month_names = {
    "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct calendar_fields {
  int month = 0;  // 0..11
  int day = 0, hour = 0, minute = 0, second = 0;
  std::uint64_t microsecond = 0;
};

// Plain digits only: from_chars would take a sign.
bool read_digits(std::string_view text, std::size_t at, std::size_t count, int& value) {
  value = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    const unsigned digit = static_cast<unsigned char>(text[i]) - 48u;
    if (digit > 9) return false;
    value = value * 10 + static_cast<int>(digit);
  }
  return true;
}

std::optional<calendar_fields> parse_calendar_text(std::string_view text) {
  if (text.size() != 22 || text[3] != ' ' || text[6] != ' ' || text[9] != ':' ||
      text[12] != ':' || text[15] != '.')
    return std::nullopt;
  // Every text of a capture asks: three bytes held against each name, no
  // library compare.
  const auto month = std::find_if(month_names.begin(), month_names.end(), [&](std::string_view name) {
    return name[0] == text[0] && name[1] == text[1] && name[2] == text[2];
  });
  if (month == month_names.end()) return std::nullopt;
  calendar_fields fields;
  fields.month = static_cast<int>(month - month_names.begin());
  int microsecond = 0;
  if (!read_digits(text, 4, 2, fields.day) || !read_digits(text, 7, 2, fields.hour) ||
      !read_digits(text, 10, 2, fields.minute) || !read_digits(text, 13, 2, fields.second) ||
      !read_digits(text, 16, 6, microsecond))
    return std::nullopt;
  fields.microsecond = static_cast<std::uint64_t>(microsecond);
  return fields;
}

// Whether `microseconds` prints as the text of `fields`: the same local
// month, day, time and microsecond ("%b %d %T" in the C locale, which
// neither program changes), told without printing.
bool prints(std::uint64_t microseconds, const calendar_fields& fields, const zone_rules& zone) {
  if (microseconds % 1000000 != fields.microsecond) return false;
  // The last second asked, one a thread: a capture's texts come in time
  // order, so most share their second with the text before.
  thread_local struct {
    const zone_rules* zone = nullptr;
    std::int64_t seconds = 0;
    bool valid = false;
    std::tm local{};
  } last;
  const auto seconds = static_cast<std::int64_t>(microseconds / 1000000);
  if (last.zone != &zone || last.seconds != seconds) {
    last.zone = &zone;
    last.seconds = seconds;
    last.valid = zone.local_time(seconds, last.local);
  }
  const std::tm& local = last.local;
  return last.valid && local.tm_sec == fields.second && local.tm_min == fields.minute &&
         local.tm_hour == fields.hour && local.tm_mday == fields.day &&
         local.tm_mon == fields.month;
}

// The ranges that put `text` in `year`: one, none where the year has no
// such day or the clocks skip the hour, two where they repeat it (the
// earlier instant first). Distinct instants, so never a range twice.
void add_year_ranges(std::uint64_t timestamp, const calendar_fields& fields, int year,
                     const zone_rules& zone, std::vector<offset_range>& ranges) {
  using namespace std::chrono;
  const year_month_day date{std::chrono::year{year}, month{static_cast<unsigned>(fields.month + 1)},
                            day{static_cast<unsigned>(fields.day)}};
  if (!date.ok() || fields.hour > 23 || fields.minute > 59 || fields.second > 59) return;
  const std::int64_t local = sys_days{date}.time_since_epoch().count() * 86'400 +
                             fields.hour * 3600 + fields.minute * 60 + fields.second;
  std::int64_t instants[2];
  const std::size_t count = local_instants(zone, local, instants);
  for (std::size_t i = 0; i < count; ++i) {
    if (instants[i] < 0 || static_cast<std::uint64_t>(instants[i]) > last_microsecond / 1000000)
      continue;
    const std::uint64_t microseconds =
        static_cast<std::uint64_t>(instants[i]) * 1000000 + fields.microsecond;
    if (microseconds > last_microsecond) continue;
    const std::uint64_t first = microseconds * 1000;
    const offset_range range{
        .start = first - timestamp * 1000,
        .length = first == last_microsecond_start
                      ? static_cast<std::uint32_t>(last_nanosecond - first + 1)
                      : 1000};
    ranges.push_back(range);
  }
}

std::vector<int> preferred_years(const year_preference& preference) {
  std::vector<int> years;
  if (preference.year) {
    const auto add = [&](int year) {
      if (year >= first_year && year <= last_year) years.push_back(year);
    };
    // From beyond the span the order is the one from its nearer end.
    const int wanted = std::clamp(*preference.year, first_year, last_year);
    add(wanted);
    for (int distance = 1; distance <= last_year - first_year + 1; ++distance) {
      add(wanted - distance);
      add(wanted + distance);
    }
  } else {
    const int now = std::clamp(preference.current_year, first_year - 1, last_year);
    for (int year = now; year >= first_year; --year) years.push_back(year);
    for (int year = now + 1; year <= last_year; ++year) years.push_back(year);
  }
  return years;
}

std::vector<offset_range> ranges_in_years(std::uint64_t timestamp, std::string_view text,
                                          std::span<const int> years, const zone_rules& zone) {
  std::vector<offset_range> ranges;
  const std::optional<calendar_fields> fields = parse_calendar_text(text);
  if (!fields) return ranges;
  for (const int year : years) add_year_ranges(timestamp, *fields, year, zone, ranges);
  return ranges;
}

// A text's ranges year by year in the preferred order, each year's made
// only when the ones before are used up: most texts take the first.
class ranges_by_year {
 public:
  ranges_by_year(std::uint64_t timestamp, std::string_view text, std::vector<int> years,
                 const zone_rules& zone)
      : timestamp_(timestamp), fields_(parse_calendar_text(text)), years_(std::move(years)),
        zone_(zone) {}

  bool next(offset_range& range) {
    while (taken_ == ranges_.size()) {
      if (!fields_ || year_ == years_.size()) return false;
      ranges_.clear();
      taken_ = 0;
      add_year_ranges(timestamp_, *fields_, years_[year_++], zone_, ranges_);
    }
    range = ranges_[taken_++];
    return true;
  }

 private:
  std::uint64_t timestamp_;
  std::optional<calendar_fields> fields_;
  std::vector<int> years_;
  const zone_rules& zone_;
  std::size_t year_ = 0;
  std::vector<offset_range> ranges_;
  std::size_t taken_ = 0;
};

// Whether the text names a local time in any year; most do in the first.
bool has_range(std::string_view text, const zone_rules& zone) {
  const std::optional<calendar_fields> fields = parse_calendar_text(text);
  if (!fields) return false;
  std::vector<offset_range> ranges;
  for (int year = first_year; year <= last_year && ranges.empty(); ++year)
    add_year_ranges(0, *fields, year, zone, ranges);
  return !ranges.empty();
}

std::uint64_t circular_distance(std::uint64_t a, std::uint64_t b) {
  return std::min(a - b, b - a);
}

// The local year a range puts `timestamp` in.
int local_year(const offset_range& range, std::uint64_t timestamp, const zone_rules& zone) {
  const auto seconds = static_cast<std::int64_t>((timestamp * 1000 + range.start) / 1000 / 1000000);
  std::tm local{};
  if (!zone.local_time(seconds, local)) return first_year;
  return local.tm_year + 1900;
}

bool narrow_by_fields(offset_range& range, std::uint64_t timestamp, const calendar_fields& fields,
                      const zone_rules& zone);

// One range for every readable text, the anchor's preferred first.
std::optional<clock_segment> one_segment(std::span<const timed_text> texts,
                                         const year_preference& preference, const zone_rules& zone,
                                         std::vector<std::uint64_t>& unreadable) {
  std::size_t anchor = 0;
  std::optional<ranges_by_year> candidates;
  offset_range range;
  for (; anchor < texts.size(); ++anchor) {
    candidates.emplace(texts[anchor].timestamp, texts[anchor].text, preferred_years(preference),
                       zone);
    if (candidates->next(range)) break;
    unreadable.push_back(texts[anchor].line);
  }
  if (anchor == texts.size()) return std::nullopt;

  std::vector<std::size_t> order;  // the texts to check, the last to rule a candidate out first
  // Each text read once: every candidate is held against the same fields.
  std::vector<calendar_fields> fields(texts.size());
  for (std::size_t i = anchor + 1; i < texts.size(); ++i) {
    if (const std::optional<calendar_fields> read = parse_calendar_text(texts[i].text)) {
      fields[i] = *read;
      order.push_back(i);
    }
    else
      unreadable.push_back(texts[i].line);
  }
  std::vector<bool> checked(texts.size(), false);  // has a range in some year
  for (bool more = true; more; more = candidates->next(range)) {
    bool survives = true;
    for (std::size_t at = 0; at < order.size() && survives;) {
      const timed_text& text = texts[order[at]];
      if (narrow_by_fields(range, text.timestamp, fields[order[at]], zone)) {
        ++at;
      } else if (checked[order[at]] || has_range(text.text, zone)) {
        checked[order[at]] = true;
        std::rotate(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(at),
                    order.begin() + static_cast<std::ptrdiff_t>(at) + 1);
        survives = false;
      } else {
        unreadable.push_back(text.line);
        order.erase(order.begin() + static_cast<std::ptrdiff_t>(at));
      }
    }
    if (!survives) continue;
    std::sort(order.begin(), order.end());
    const std::uint64_t last_line = order.empty() ? texts[anchor].line : texts[order.back()].line;
    return clock_segment{.first_line = texts[anchor].line,
                         .last_line = last_line,
                         .texts = order.size() + 1,
                         .range = range,
                         .first_timestamp = texts[anchor].timestamp};
  }
  return std::nullopt;
}

}  // namespace

zol::timesync_pair offset_range::pair(std::uint64_t timestamp) const noexcept {
  const std::uint64_t tmx = timestamp * 1000;
  return {.tmx = static_cast<std::int64_t>(tmx),
          .calendar = static_cast<std::int64_t>(tmx + start)};
}

bool is_calendar_text(std::string_view text) { return parse_calendar_text(text).has_value(); }

bool narrow_range(offset_range& range, std::uint64_t timestamp, std::string_view text,
                  const zone_rules& zone) {
  const std::optional<calendar_fields> fields = parse_calendar_text(text);
  return fields && narrow_by_fields(range, timestamp, *fields, zone);
}

namespace {

bool narrow_by_fields(offset_range& range, std::uint64_t timestamp, const calendar_fields& fields,
                      const zone_rules& zone) {
  std::uint64_t offset = range.start;
  std::uint64_t sum = timestamp * 1000 + offset;
  std::uint32_t left = range.length;
  // Pieces of one microsecond each: the sum crosses a multiple of 1000 or
  // wraps past 2^64 − 1 at most twice in 1000 offsets.
  while (left > 0) {
    const std::uint64_t to_next =
        sum >= last_microsecond_start ? last_nanosecond - sum + 1 : 1000 - sum % 1000;
    const auto piece = static_cast<std::uint32_t>(std::min<std::uint64_t>(to_next, left));
    if (prints(sum / 1000, fields, zone)) {
      range = {.start = offset, .length = piece};
      return true;
    }
    offset += piece;
    sum += piece;
    left -= piece;
  }
  return false;
}

}  // namespace

std::vector<offset_range> text_ranges(std::uint64_t timestamp, std::string_view text,
                                      const year_preference& preference, const zone_rules& zone) {
  return ranges_in_years(timestamp, text, preferred_years(preference), zone);
}

std::optional<zol::timesync_pair> recovered_clock::pair() const {
  if (segments.empty()) return std::nullopt;
  return segments[main].pair();
}

recovered_clock recover_clock(std::span<const timed_text> texts, const year_preference& preference,
                              const zone_rules& zone) {
  recovered_clock clock;
  clock.segment_of.reserve(texts.size());
  if (std::optional<clock_segment> segment =
          one_segment(texts, preference, zone, clock.unreadable)) {
    clock.segments.push_back(*segment);
    std::sort(clock.unreadable.begin(), clock.unreadable.end());
    for (const timed_text& text : texts) clock.segment_of.push_back({text.line, 0});
    return clock;
  }
  clock_follower follower(preference, zone, {});
  std::string note;
  for (const timed_text& text : texts) {
    follower.next_record(text.timestamp, text.text, text.line, note);
    if (const auto segment = follower.current_segment())
      clock.segment_of.push_back({text.line, static_cast<std::uint32_t>(*segment)});
  }
  clock.segments = follower.segments();
  clock.unreadable = follower.unreadable();
  for (std::size_t i = 1; i < clock.segments.size(); ++i)
    if (clock.segments[i].texts > clock.segments[clock.main].texts) clock.main = i;
  return clock;
}

clock_follower::clock_follower(const year_preference& preference, const zone_rules& zone,
                               std::span<const timed_text> first_texts)
    : preference_(preference), zone_(&zone) {
  if (first_texts.empty()) return;
  std::vector<std::uint64_t> unreadable;
  std::optional<clock_segment> start = one_segment(first_texts, preference, zone, unreadable);
  if (!start) {
    // The walk starts with no range, so it needs no start of its own.
    clock_follower walk(preference, zone, {});
    std::string note;
    for (const timed_text& text : first_texts)
      walk.next_record(text.timestamp, text.text, text.line, note);
    if (!walk.segments_.empty()) start = walk.segments_.front();
  }
  // Taken up by the first text that it gives.
  if (start) segments_.push_back({.range = start->range});
}

bool clock_follower::next_record(std::uint64_t timestamp, std::optional<std::string_view> text,
                                 std::uint64_t line, std::string& note) {
  has_text_ = text.has_value();
  if (!text) return true;
  const auto take = [&](std::size_t segment, const offset_range& range) {
    clock_segment& taken = segments_[segment];
    if (taken.texts == 0) {
      taken.first_line = line;
      taken.first_timestamp = timestamp;
    }
    taken.last_line = line;
    ++taken.texts;
    taken.range = range;
    current_ = segment;
  };
  const auto start_segment = [&](const offset_range& range) {
    if (segments_.empty() || segments_[current_].texts > 0) segments_.emplace_back();
    take(segments_.size() - 1, range);
  };

  offset_range range;
  if (!segments_.empty()) {
    range = segments_[current_].range;
    if (narrow_range(range, timestamp, *text, *zone_)) {
      take(current_, range);
      return true;
    }
  }
  if (!is_calendar_text(*text)) {
    unreadable_.push_back(line);
    note = "calendar-time '" + std::string(*text) + "' is not a \"Mon DD HH:MM:SS.ffffff\" time";
    return false;
  }
  for (std::size_t i = segments_.size(); i-- > 0;) {
    range = segments_[i].range;
    if (i != current_ && narrow_range(range, timestamp, *text, *zone_)) {
      start_segment(range);
      return true;
    }
  }

  std::vector<offset_range> candidates;
  if (!segments_.empty()) {
    const offset_range& before = segments_[current_].range;
    const int year = local_year(before, timestamp, *zone_);
    const std::array<int, 3> near_years = {year, year - 1, year + 1};
    candidates = ranges_in_years(timestamp, *text, near_years, *zone_);
    if (candidates.empty()) candidates = text_ranges(timestamp, *text, preference_, *zone_);
    std::stable_sort(candidates.begin(), candidates.end(), [&](const auto& a, const auto& b) {
      return circular_distance(a.start, before.start) < circular_distance(b.start, before.start);
    });
  } else {
    candidates = text_ranges(timestamp, *text, preference_, *zone_);
  }
  if (candidates.empty()) {
    unreadable_.push_back(line);
    note = "calendar-time '" + std::string(*text) +
           "' is no local time in this time zone (give the phone's with --zone)";
    return false;
  }
  start_segment(candidates.front());
  return true;
}

bool clock_follower::read(zol::timesync_pair& pair) {
  if (!has_text_ || segments_.empty()) return false;
  pair = segments_[current_].pair();
  return true;
}

std::optional<zol::timesync_pair> parse_timesync(std::string_view text) {
  zol::timesync_pair pair;
  const char* const end = text.data() + text.size();
  const auto tmx = std::from_chars(text.data(), end, pair.tmx);
  if (tmx.ec != std::errc{} || tmx.ptr == end || *tmx.ptr != ',') return std::nullopt;
  const auto calendar = std::from_chars(tmx.ptr + 1, end, pair.calendar);
  if (calendar.ec != std::errc{} || calendar.ptr != end) return std::nullopt;
  return pair;
}

}  // namespace inspect
