#include "liblog_zol/calendar_time.h"

#include <algorithm>
#include <cstring>

#include "liblog_zol/line_builder.h"

namespace zol {
namespace {

// "%b %d %T" of the last second converted, one a thread. Records come in
// time order, so most share their second with the record before; a zone
// never changes, so the same second always gives the same text.
struct clock_text {
  bool valid = false;
  const local_zone* zone = nullptr;
  std::uint64_t seconds = 0;
  char chars[30];
  std::size_t size = 0;
};

const clock_text* clock_text_of(std::uint64_t seconds, const local_zone& zone) {
  thread_local clock_text last;
  if (last.valid && last.seconds == seconds && last.zone == &zone) return &last;
  last.valid = false;
  std::tm local{};
  if (!zone.local_time(static_cast<std::int64_t>(seconds), local)) return nullptr;
  last.size = std::strftime(last.chars, sizeof last.chars, "%b %d %T", &local);
  if (last.size == 0) return nullptr;
  last.seconds = seconds;
  last.zone = &zone;
  last.valid = true;
  return &last;
}

}  // namespace

std::uint64_t calendar_microseconds(std::uint64_t timestamp, const timesync_pair& pair) noexcept {
  return (timestamp * 1000 + static_cast<std::uint64_t>(pair.calendar) -
          static_cast<std::uint64_t>(pair.tmx)) / 1000;
}

bool make_calendar_text(std::uint64_t microseconds, calendar_text& text, const local_zone& zone) {
  const std::uint64_t seconds = microseconds / 1000000;
  const std::uint64_t fraction = microseconds - seconds * 1000000;

  const clock_text* clock = clock_text_of(seconds, zone);
  if (clock == nullptr) return false;
  // "%s.%06lld" of the clock text and the fraction, cut to the 30-byte buffer
  // as snprintf would cut it.
  char full[sizeof text.chars + 7];
  const std::size_t clock_size = clock->size;
  // Whole arrays, in copies the compiler unrolls.
  std::memcpy(full, clock->chars, sizeof clock->chars);
  full[clock_size] = '.';
  const auto micro = static_cast<std::uint32_t>(fraction);
  write_pair(full + clock_size + 1, micro / 10000);
  write_pair(full + clock_size + 3, micro / 100 % 100);
  write_pair(full + clock_size + 5, micro % 100);
  text.size = std::min(clock_size + 7, sizeof text.chars - 1);
  std::memcpy(text.chars, full, sizeof text.chars);
  return true;
}

}  // namespace zol
