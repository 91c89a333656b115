#pragma once

// Records and their printed lines, as a capture reader hands them over.

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "quandor/layouts/record_layouts.h"

using bytes = std::vector<std::uint8_t>;

// Stores `value` little-endian at `offset`, however unaligned.
template <class T>
void put(bytes& record, std::size_t offset, T value) {
  std::memcpy(record.data() + offset, &value, sizeof value);
}

// Lines without their newlines.
inline std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

inline std::vector<std::string_view> views(const std::vector<std::string>& lines) {
  return {lines.begin(), lines.end()};
}

// Each record kind as one printer and its parser, over plain byte vectors.
struct codec {
  void (*print)(std::ostream&, std::span<const std::uint8_t>);
  std::optional<bytes> (*parse)(std::span<const std::string_view>, layouts::parse_fault&);
};

// The record of a parse, if its heading names what `wanted` says.
template <class Parsed, class Wanted>
std::optional<bytes> record_of(const std::optional<Parsed>& parsed, Wanted wanted) {
  if (!parsed || !wanted(*parsed)) return std::nullopt;
  if constexpr (requires { parsed->record; })
    return bytes(parsed->record.begin(), parsed->record.end());
  else if constexpr (requires { parsed->table; })
    return bytes(parsed->table.begin(), parsed->table.end());
  else
    return bytes(parsed->begin(), parsed->end());
}

inline constexpr auto any = [](const auto&) { return true; };

inline const codec stats_codec{
    [](auto& out, auto r) { layouts::write_stats(out, r); },
    [](auto l, auto& f) { return record_of(layouts::parse_stats(l, f), any); }};
inline const codec scan_state_codec{
    [](auto& out, auto r) { layouts::write_scan_state(out, r); },
    [](auto l, auto& f) { return record_of(layouts::parse_scan_state(l, f), any); }};
inline const codec btmspk_codec{
    [](auto& out, auto r) { layouts::write_power_state(out, "btmspk", r); },
    [](auto l, auto& f) {
      return record_of(layouts::parse_power_state(l, f),
                       [](const auto& b) { return b.service == "btmspk"; });
    }};
inline const codec enable_counts_codec{
    [](auto& out, auto r) { layouts::write_counts(out, 0xd1, r); },
    [](auto l, auto& f) {
      return record_of(layouts::parse_counts(l, f),
                       [](const auto& b) { return b.command == 0xd1; });
    }};
inline const codec input_report_errors_codec{
    [](auto& out, auto r) { layouts::write_input_report_errors(out, "zol-button", r); },
    [](auto l, auto& f) {
      return record_of(layouts::parse_input_report_errors(l, f),
                       [](const auto& b) { return b.service == "zol-button"; });
    }};
inline const codec samples_codec{
    [](auto& out, auto r) { layouts::write_samples(out, r); },
    [](auto l, auto& f) { return layouts::parse_samples(l, f); }};

// The table of a reply of `length` bytes.
template <std::uint64_t length>
const codec assets_codec{
    [](auto& out, auto r) { layouts::write_assets(out, length, r); },
    [](auto l, auto& f) {
      return record_of(layouts::parse_assets(l, f),
                       [](const auto& b) { return b.length == length; });
    }};

inline std::vector<std::string> printed_lines(const codec& kind, const bytes& record) {
  std::ostringstream out;
  kind.print(out, record);
  return lines_of(out.str());
}
