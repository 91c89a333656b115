#pragma once

// What the pages of the desk tool (timeline, compare) share: text escaped
// for HTML and SVG, and the step of a time axis.

#include <cstdint>
#include <string>
#include <string_view>

namespace inspect {

void append_html(std::string& out, std::string_view text);

// A step of 1, 2 or 5 times a power of ten giving at most ten ticks.
std::uint64_t axis_step(std::uint64_t span);

}  // namespace inspect
