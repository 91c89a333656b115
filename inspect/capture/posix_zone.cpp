// POSIX TZ rules, "std offset [dst [offset] [,start[/time],end[/time]]]":
// what TZ holds when it names no zone file, and what a zone file ends with
// for the years after its last listed change.

#include <array>
#include <chrono>
#include <optional>
#include <utility>

#include "inspect/capture/zone_rules.h"

namespace inspect {
namespace {

// A day of the year: Jn (1-365, February 29 never counted), n (0-365), or
// Mm.w.d (weekday d of week w, 5 the last, of month m); and the local time
// of day the change happens at.
struct change_rule {
  enum class form { julian, zero_based, month_week_day } kind = form::month_week_day;
  int day = 0, month = 0, week = 0;
  std::int32_t time = 2 * 3600;
};

class rule_reader {
 public:
  explicit rule_reader(std::string_view text) : text_(text) {}

  bool done() const noexcept { return at_ == text_.size(); }
  bool take(char c) {
    if (at_ < text_.size() && text_[at_] == c) return ++at_, true;
    return false;
  }
  bool at_name_start() const noexcept {
    return at_ < text_.size() && (text_[at_] == '<' || is_letter(text_[at_]));
  }

  // Three letters or more, or <...> of letters, digits and signs.
  bool name() {
    if (take('<')) {
      const std::size_t close = text_.find('>', at_);
      if (close == std::string_view::npos || close - at_ < 3) return false;
      at_ = close + 1;
      return true;
    }
    const std::size_t start = at_;
    while (at_ < text_.size() && is_letter(text_[at_])) ++at_;
    return at_ - start >= 3;
  }

  // [+-]hh[:mm[:ss]], in seconds, up to `max_hours`.
  bool duration(std::int32_t& seconds, int max_hours) {
    const bool negative = take('-');
    if (!negative) take('+');
    int parts[3] = {0, 0, 0};
    for (int i = 0; i < 3; ++i) {
      if (i > 0 && !take(':')) break;
      if (!number(parts[i], i == 0 ? max_hours : 59)) return false;
    }
    seconds = (parts[0] * 3600 + parts[1] * 60 + parts[2]) * (negative ? -1 : 1);
    return true;
  }

  bool change(change_rule& rule) {
    if (take('M')) {
      rule.kind = change_rule::form::month_week_day;
      if (!number(rule.month, 12) || rule.month < 1 || !take('.') || !number(rule.week, 5) ||
          rule.week < 1 || !take('.') || !number(rule.day, 6))
        return false;
    } else if (take('J')) {
      rule.kind = change_rule::form::julian;
      if (!number(rule.day, 365) || rule.day < 1) return false;
    } else {
      rule.kind = change_rule::form::zero_based;
      if (!number(rule.day, 365)) return false;
    }
    return !take('/') || duration(rule.time, 167);
  }

 private:
  static bool is_letter(char c) noexcept { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

  bool number(int& value, int max) {
    const std::size_t start = at_;
    value = 0;
    while (at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9' && at_ - start < 3)
      value = value * 10 + (text_[at_++] - '0');
    return at_ > start && value <= max;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// Days since 1970 of a rule's day in `year`.
std::int64_t change_day(const change_rule& rule, int year) {
  using namespace std::chrono;
  const std::chrono::year y{year};
  sys_days day;
  switch (rule.kind) {
    case change_rule::form::julian:
      day = sys_days{y / January / 1} + days{rule.day - 1 + (y.is_leap() && rule.day >= 60 ? 1 : 0)};
      break;
    case change_rule::form::zero_based:
      day = sys_days{y / January / 1} + days{rule.day};
      break;
    case change_rule::form::month_week_day: {
      const month m{static_cast<unsigned>(rule.month)};
      const weekday d{static_cast<unsigned>(rule.day)};
      day = rule.week == 5 ? sys_days{y / m / weekday_last{d}}
                           : sys_days{y / m / weekday_indexed{d, static_cast<unsigned>(rule.week)}};
      break;
    }
  }
  return day.time_since_epoch().count();
}

// The year of a time counted as if UTC.
int standard_year(std::int64_t local) {
  using namespace std::chrono;
  const auto day = sys_days{days{local / 86'400 - (local % 86'400 < 0 ? 1 : 0)}};
  return static_cast<int>(year_month_day{day}.year());
}

class posix_rules final : public zone_rules {
 public:
  posix_rules(std::int32_t standard, std::optional<std::int32_t> summer, change_rule start,
              change_rule end)
      : standard_(standard), summer_(summer), start_(start), end_(end) {
    if (!summer_) return;
    for (int year = first_year; year <= last_year; ++year)
      kept_[static_cast<std::size_t>(year - first_year)] = changes_in(year);
  }

  std::int32_t utc_offset(std::int64_t seconds) const override {
    if (!summer_) return standard_;
    const int year = standard_year(seconds + standard_);
    const auto [start, end] = year >= first_year && year <= last_year
                                  ? kept_[static_cast<std::size_t>(year - first_year)]
                                  : changes_in(year);
    const bool summer =
        start < end ? seconds >= start && seconds < end : seconds >= start || seconds < end;
    return summer ? *summer_ : standard_;
  }

 private:
  // The years every sum the collector makes falls in, worked out once.
  static constexpr int first_year = 1968, last_year = 2556;

  // The instants daylight time starts and ends in `year`: it starts at a
  // standard time and ends at a daylight one; south of the equator it spans
  // the new year.
  std::pair<std::int64_t, std::int64_t> changes_in(int year) const {
    return {change_day(start_, year) * 86'400 + start_.time - standard_,
            change_day(end_, year) * 86'400 + end_.time - *summer_};
  }

  std::int32_t standard_;
  std::optional<std::int32_t> summer_;
  change_rule start_, end_;
  std::array<std::pair<std::int64_t, std::int64_t>, last_year - first_year + 1> kept_{};
};

}  // namespace

std::unique_ptr<const zone_rules> posix_zone(std::string_view rule) {
  rule_reader reader(rule);
  // Offsets within a day of UTC, as every zone's is.
  std::int32_t west = 0;
  if (!reader.name() || !reader.duration(west, 23)) return nullptr;
  const std::int32_t standard = -west;
  std::optional<std::int32_t> summer;
  // Without rules, the United States' since 2007, as the C library takes them.
  change_rule start{.month = 3, .week = 2}, end{.month = 11, .week = 1};
  if (reader.at_name_start()) {
    if (!reader.name()) return nullptr;
    summer = standard + 3600;
    if (!reader.done() && !reader.take(',')) {
      if (!reader.duration(west, 23)) return nullptr;
      summer = -west;
      if (!reader.done() && !reader.take(',')) return nullptr;
    }
    if (!reader.done() && (!reader.change(start) || !reader.take(',') || !reader.change(end)))
      return nullptr;
  }
  if (!reader.done()) return nullptr;
  // Summer time an hour ahead of a standard time 23 hours east would not be.
  if (summer && (*summer <= -86'400 || *summer >= 86'400)) return nullptr;
  return std::make_unique<posix_rules>(standard, summer, start, end);
}

}  // namespace inspect
