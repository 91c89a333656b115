#pragma once

// What the pages of the desk tool (timeline, compare) share: their width
// and palette, their head and styles, text escaped for HTML and SVG, and the
// step of a time axis.

#include <cstdint>
#include <string>
#include <string_view>

namespace inspect {

// In CSS pixels: the page, and the margin right of a plot.
constexpr double page_width = 1200;
constexpr double right_margin = 24;

// The press's steps alike on every page: finger, held, asset; and trouble.
constexpr std::string_view finger_colour = "#4c93c8";
constexpr std::string_view held_colour = "#c8c8c8";
constexpr std::string_view asset_colour = "#e07b00";
constexpr std::string_view warning_colour = "#b00020";

// The page up to its open <h1>, the title escaped, with the shared styles
// and the page's own.
void append_page_head(std::string& out, std::string_view title, std::string_view own_style);

void append_html(std::string& out, std::string_view text);

// A step of 1, 2 or 5 times a power of ten giving at most ten ticks.
std::uint64_t axis_step(std::uint64_t span);

}  // namespace inspect
