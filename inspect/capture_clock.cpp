#include "inspect/capture_clock.h"

#include <array>
#include <charconv>
#include <ctime>

#include "liblog_zol/calendar_time.h"

namespace inspect {
namespace {

constexpr std::array<std::string_view, 12> month_names = {
    "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Candidate years when none is given: the current one and the seven before,
// which holds a leap year for "Feb 29".
constexpr int years_back = 8;

struct calendar_fields {
  int month;  // 0..11
  int day, hour, minute, second;
  int microsecond;
};

bool read_number(std::string_view text, std::size_t at, std::size_t size, int& value) {
  if (at + size > text.size()) return false;
  const char* first = text.data() + at;
  const auto [end, error] = std::from_chars(first, first + size, value);
  return error == std::errc{} && end == first + size;
}

// "Mar 04 10:15:02.123456"
std::optional<calendar_fields> parse_text(std::string_view text) {
  if (text.size() != 22 || text[3] != ' ' || text[6] != ' ' || text[9] != ':' ||
      text[12] != ':' || text[15] != '.')
    return std::nullopt;
  calendar_fields fields{};
  fields.month = -1;
  for (std::size_t i = 0; i < month_names.size(); ++i)
    if (text.substr(0, 3) == month_names[i]) fields.month = static_cast<int>(i);
  if (fields.month < 0) return std::nullopt;
  if (!read_number(text, 4, 2, fields.day) || !read_number(text, 7, 2, fields.hour) ||
      !read_number(text, 10, 2, fields.minute) || !read_number(text, 13, 2, fields.second) ||
      !read_number(text, 16, 6, fields.microsecond))
    return std::nullopt;
  return fields;
}

int current_year() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (localtime_r(&now, &local) == nullptr) return 1970;
  return local.tm_year + 1900;
}

bool text_matches(std::uint64_t timestamp, const zol::timesync_pair& pair, std::string_view text) {
  zol::calendar_text made;
  return zol::make_calendar_text(zol::calendar_microseconds(timestamp, pair), made) &&
         made.view() == text;
}

// The pair that gives `text` for `timestamp` in `year`, if the local time
// exists there. Both offsets of a repeated hour are tried.
std::optional<zol::timesync_pair> pair_in_year(std::uint64_t timestamp, const calendar_fields& fields,
                                               int year, std::string_view text) {
  for (const int dst : {-1, 0, 1}) {
    std::tm local{};
    local.tm_year = year - 1900;
    local.tm_mon = fields.month;
    local.tm_mday = fields.day;
    local.tm_hour = fields.hour;
    local.tm_min = fields.minute;
    local.tm_sec = fields.second;
    local.tm_isdst = dst;
    const std::time_t seconds = mktime(&local);
    const auto microseconds = static_cast<std::uint64_t>(seconds) * 1000000 +
                              static_cast<std::uint64_t>(fields.microsecond);
    const zol::timesync_pair pair{
        .tmx = static_cast<std::int64_t>(timestamp * 1000),
        .calendar = static_cast<std::int64_t>(microseconds * 1000),
    };
    if (text_matches(timestamp, pair, text)) return pair;
  }
  return std::nullopt;
}

}  // namespace

bool capture_clock::next_record(std::uint64_t timestamp, std::optional<std::string_view> text,
                                std::string& fault) {
  has_text_ = text.has_value();
  if (!text) return true;
  if (pair_ && text_matches(timestamp, *pair_, *text)) return true;
  const std::optional<calendar_fields> fields = parse_text(*text);
  if (!fields) {
    fault = "calendar-time '" + std::string(*text) + "' is not a \"Mon DD HH:MM:SS.ffffff\" time";
    return false;
  }
  std::optional<zol::timesync_pair> found;
  if (year_) {
    found = pair_in_year(timestamp, *fields, *year_, *text);
  } else {
    const int now = current_year();
    for (int year = now; year > now - years_back && !found; --year)
      found = pair_in_year(timestamp, *fields, year, *text);
  }
  if (found) {
    pair_ = found;
    return true;
  }
  fault = "calendar-time '" + std::string(*text) + "' is no local time" +
          (year_ ? " in " + std::to_string(*year_) : std::string()) +
          " in this time zone (set TZ to the phone's)";
  return false;
}

bool capture_clock::read(zol::timesync_pair& pair) {
  if (!has_text_ || !pair_) return false;
  pair = *pair_;
  return true;
}

std::optional<zol::timesync_pair> parse_timesync(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  zol::timesync_pair pair;
  const auto read = [](std::string_view number, std::int64_t& value) {
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    return error == std::errc{} && end == number.data() + number.size() && !number.empty();
  };
  if (!read(text.substr(0, comma), pair.tmx) || !read(text.substr(comma + 1), pair.calendar))
    return std::nullopt;
  return pair;
}

}  // namespace inspect
