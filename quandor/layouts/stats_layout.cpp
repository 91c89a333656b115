#include <sstream>

#include "quandor/layouts/field_rows.h"

namespace layouts {
namespace {

constexpr std::string_view us = " us";
constexpr auto u64 = value_form::u64;

// A row with its role in the press.
constexpr field_row press_row(std::string_view caption, value_form form, std::size_t offset,
                              std::string_view name, field_role role, std::string_view unit = us,
                              std::optional<std::size_t> index = {}) {
  field_row row{caption, form, offset, name, unit, index};
  row.role = role;
  return row;
}

using enum field_role;

// Edges 2k and 2k + 1 are the down and up of click k.
constexpr field_row stats_rows[] = {
    {"pkey_stats"},
    {"-- Last Button Press --"},
    press_row("Click Count", value_form::count_above_bit0, 233, "click_count", click_count, {}),
    press_row("Finger ON Timestamp", u64, 0, "finger_on_timestamp", finger_on),
    press_row("Start Haptics Timestamp", u64, 16, "start_haptics_timestamp", start_haptics),
    press_row("Latency - Finger Detect to Button Down", u64, 24, "latency_fd_to_down", finger_to_down_latency),
    {"--Click 1--"},
    press_row("Latency   - Button Down to Play Asset", u64, 184, "play_asset_latency", asset_latency, us, 0),
    press_row("Timestamp - Button Down", u64, 88, "button_timestamp", button_edge, us, 0),
    press_row("Timestamp - Button Down Play Asset", u64, 136, "play_asset_timestamp", asset_edge, us, 0),
    press_row("Latency   - Button Up to Play Asset", u64, 192, "play_asset_latency", asset_latency, us, 1),
    press_row("Timestamp - Button Up", u64, 96, "button_timestamp", button_edge, us, 1),
    press_row("Timestamp - Button Up Play Asset", u64, 144, "play_asset_timestamp", asset_edge, us, 1),
    {"--Click 2--"},
    press_row("Latency   - Button Down to Play Asset", u64, 200, "play_asset_latency", asset_latency, us, 2),
    press_row("Timestamp - Button Down", u64, 104, "button_timestamp", button_edge, us, 2),
    press_row("Timestamp - Button Down Play Asset", u64, 152, "play_asset_timestamp", asset_edge, us, 2),
    press_row("Latency   - Button Up to Play Asset", u64, 208, "play_asset_latency", asset_latency, us, 3),
    press_row("Timestamp - Button Up", u64, 112, "button_timestamp", button_edge, us, 3),
    press_row("Timestamp - Button Up Play Asset", u64, 160, "play_asset_timestamp", asset_edge, us, 3),
    {"--Click 3--"},
    press_row("Latency   - Button Down to Play Asset", u64, 216, "play_asset_latency", asset_latency, us, 4),
    press_row("Timestamp - Button Down", u64, 120, "button_timestamp", button_edge, us, 4),
    press_row("Timestamp - Button Down Play Asset", u64, 168, "play_asset_timestamp", asset_edge, us, 4),
    press_row("Latency   - Button Up to Play Asset", u64, 224, "play_asset_latency", asset_latency, us, 5),
    press_row("Timestamp - Button Up", u64, 128, "button_timestamp", button_edge, us, 5),
    press_row("Timestamp - Button Up Play Asset", u64, 176, "play_asset_timestamp", asset_edge, us, 5),
    // Unsigned: a second scan before finger-on wraps, and is shown so.
    {"Second scan delta from FD", value_form::u64_after, 266, "second_scan_delta", us, {}, 0, {},
     second_scan_delta},
    press_row("Num Gorvin Scans", value_form::u32, 274, "num_gorvin_scans", gorvin_scans, {}),
    press_row("Num Lumet Scans", value_form::u32, 278, "num_lumet_scans", lumet_scans, {}),
    press_row("Finger OFF Timestamp", u64, 8, "finger_off_timestamp", finger_off),
    {"\n\n"},
};
static_assert(line_count(stats_rows) == stats_lines);

constexpr line_layout stats_layout{"statistics", 58, ": ", stats_rows};

}  // namespace

void write_stats(std::ostream& out, std::span<const std::uint8_t> record) {
  write_rows(out, stats_layout, byte_reader(record));
}

std::optional<std::array<std::uint8_t, stats_size>> parse_stats(
    std::span<const std::string_view> lines, parse_fault& fault) {
  std::array<std::uint8_t, stats_size> record{};
  if (!has_lines(stats_layout.what, lines, stats_lines, fault) ||
      !parse_rows(stats_layout, lines, 0, record, fault))
    return std::nullopt;
  std::ostringstream printed;
  write_stats(printed, record);
  if (!prints_back(stats_layout, lines, 0, printed.str(), fault)) return std::nullopt;
  return record;
}

std::vector<named_field> stats_fields(std::span<const std::uint8_t> record) {
  std::vector<named_field> fields;
  add_fields(stats_rows, byte_reader(record), 0, std::nullopt, fields);
  return fields;
}

}  // namespace layouts
