#pragma once

// Wall-clock time of a record timestamp through a clock-correlation pair, and
// its calendar-time text in the device's local time zone.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "liblog_zol/clock_source.h"
#include "liblog_zol/local_zone.h"

namespace zol {

// Microseconds since 1970 (UTC) of a timestamp: the timestamp scaled to the
// pair's unit, shifted by the pair, in unsigned arithmetic as the device does.
std::uint64_t calendar_microseconds(std::uint64_t timestamp, const timesync_pair& pair) noexcept;

// "Mar 04 10:15:02.123456", kept on the stack.
struct calendar_text {
  char chars[30];
  std::size_t size;

  std::string_view view() const noexcept { return {chars, size}; }
};

// The local "%b %d %T.%06lld" text of an instant; false when the instant has
// no local time.
bool make_calendar_text(std::uint64_t microseconds, calendar_text& text,
                        const local_zone& zone = c_library_zone());

}  // namespace zol
