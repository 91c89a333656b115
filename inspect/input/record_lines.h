#pragma once

// The 48-byte records as the inputs carry them: a capture's profile lines
// (from their binary-data), "prof-event " hex lines, raw bytes.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace inspect {

inline constexpr std::string_view profile_line_start = "{  'category':";
inline constexpr std::string_view hex_line_start = "prof-event ";

struct input_record {
  std::array<std::uint8_t, 48> bytes{};
  // Harvest and hex: the line the record came from, and the last one its
  // text runs over (a text may hold a line end); raw: 0.
  std::uint64_t line = 0;
  std::uint64_t last_line = 0;
  // Raw: the byte offset of the record in the (uncompressed) input.
  std::uint64_t offset = 0;
  // Harvest: the line's 'calendar-time' text, when it has one. Valid as long
  // as the line it was read from.
  std::optional<std::string_view> calendar_text;
};

// Fill `record` from a line that starts with the form's start, or say what
// is wrong in `fault`.
bool parse_profile_line(std::string_view line, input_record& record, std::string& fault);
bool parse_hex_line(std::string_view line, input_record& record, std::string& fault);

// What stands before a profile line's calendar-time text.
inline constexpr std::string_view calendar_item_start = ", 'calendar-time':'";

}  // namespace inspect
