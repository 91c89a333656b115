#pragma once

// The rows the record layouts are made of. A row names a field, says where it
// lies and how its bytes become text; the same row prints the field, reads it
// back and names it for reports.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "liblog_zol/byte_reader.h"
#include "quandor/layouts/record_layouts.h"

namespace layouts {

// Device gains and thresholds carry 16 fractional bits.
inline constexpr double fixed_point_scale = 1.52587890625e-05;
inline constexpr double seconds_per_scan_tick = 2.56;

enum class value_form : std::uint8_t {
  text,              // no field: the caption is the whole line
  u32,
  i32,
  u64,
  flag,              // one byte, shown as 0 or 1
  count_above_bit0,  // u32 whose lowest bit is not part of the count
  u64_after,         // u64 minus the u64 at `base`, wrapping
  u32_less,          // u32 minus the u32 at `base`, wrapping; derived, never stored
  scan_ticks,        // u32 ticks of 2.56 seconds
  fixed_single,      // i32 with 16 fractional bits, through float
  fixed_double,      // i32 with 16 fractional bits
  hex_u32,           // u32 in lower-case hex, at least two columns
};

struct field_row {
  std::string_view caption;  // the label before padding; in an entry, the text before the value
  value_form form = value_form::text;
  std::size_t offset = 0;
  std::string_view name = {};              // for reports
  std::string_view unit = {};              // printed after the value
  std::optional<std::size_t> index = {};   // element of an array field
  std::size_t base = 0;                    // the other operand of a difference
  std::string_view raw_name = {};          // the stored integer of a scaled value
  field_role role = field_role::none;
};

// Rows printed one a line, each value after its padded caption and `tail`.
struct line_layout {
  std::string_view what;  // the record, in fault messages
  std::size_t label_width;
  std::string_view tail;
  std::span<const field_row> rows;
};

// A fixed row may hold newlines: its lines share one flush.
constexpr std::size_t line_count(std::span<const field_row> rows) {
  std::size_t lines = rows.size();
  for (const field_row& row : rows)
    if (row.form == value_form::text)
      for (const char c : row.caption) lines += c == '\n';
  return lines;
}

std::string padded_label(std::string_view caption, std::size_t width, std::string_view tail);

void write_rows(std::ostream& out, const line_layout& layout, const byte_reader& record);

// Stores what `lines` (the rows' lines, from block line `first` on) say into
// `record`.
bool parse_rows(const line_layout& layout, std::span<const std::string_view> lines,
                std::size_t first, std::span<std::uint8_t> record, parse_fault& fault);

// One line of values, each after its row's caption; no end of line.
void write_entry(std::ostream& out, std::span<const field_row> rows, const byte_reader& record,
                 std::size_t start);

// Reads `text`, an entry line after its title, into the entry at `start`.
bool parse_entry(std::string_view what, std::span<const field_row> rows, std::string_view text,
                 std::span<std::uint8_t> record, std::size_t start, std::string& message);

void add_fields(std::span<const field_row> rows, const byte_reader& record, std::size_t start,
                std::optional<std::size_t> entry, std::vector<named_field>& fields);

// The caption of the row that printed line `line` of the rows.
std::string_view caption_at(std::span<const field_row> rows, std::size_t line);

// The first line where the block and the print differ, if any.
std::optional<std::size_t> first_difference(std::span<const std::string_view> lines,
                                            std::string_view printed);

// The final check: `printed`, the rebuilt record's print, is the block again.
// The rows' lines start at block line `first`.
bool prints_back(const line_layout& layout, std::span<const std::string_view> lines,
                 std::size_t first, std::string_view printed, parse_fault& fault);

// A block of the wrong size: the first missing or extra line.
bool has_lines(std::string_view what, std::span<const std::string_view> lines, std::size_t count,
               parse_fault& fault);

// The words after `prefix` and before `suffix`, if the line is so framed.
std::optional<std::string_view> framed(std::string_view line, std::string_view prefix,
                                       std::string_view suffix);

}  // namespace layouts
