#pragma once

// Wall-clock text of a record timestamp, through the clock-correlation pair
// that the timesync service publishes.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zol {

// "Mar 04 10:15:02.123456", kept on the stack.
struct calendar_text {
  char chars[30];
  std::size_t size;

  std::string_view view() const noexcept { return {chars, size}; }
};

// False, and `text` untouched, when the platform publishes no correlation.
bool make_calendar_time(std::uint64_t timestamp, calendar_text& text);

}  // namespace zol
