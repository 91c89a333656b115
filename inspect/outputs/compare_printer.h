#pragma once

// The comparison of two harvests described once, part by part in the order
// of a harvest (compare_view.cpp), and handed to a printer: text for
// people, one JSON object for tools, or a page with both presses drawn on
// one time axis. Each value comes with its JSON for tools and its words for
// people; a printer only lays them out.

#include <nlohmann/json.hpp>

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/compare/comparison.h"

namespace inspect {

inline constexpr int compare_schema_version = 2;

// A value as tools and people see it: `json` null where there is none,
// `text` empty where people see nothing.
struct compare_cell {
  nlohmann::ordered_json json;
  std::string text;
};

// Where people see a column: in a row's name, A's or B's value, or its
// note; as the heading of a group of rows; or not at all.
enum class compare_slot : std::uint8_t { tools, group, name, a, b, note };

struct compare_column {
  std::string_view key;  // for tools; "" for people alone
  compare_slot slot;
  std::size_t width = 0;  // for people: padded to it when a cell follows in the slot
};

// A value of each side, in an object of its own per side for tools.
struct compare_side_row {
  std::string_view key;
  std::string_view label;  // "" for tools alone
  std::uint64_t a, b;
};

using compare_rows = std::vector<std::vector<compare_cell>>;

class compare_printer {
 public:
  virtual ~compare_printer() = default;
  // What was compared, and how.
  virtual void heading(const comparison& c) = 0;
  virtual void begin_part(const compare_part_row& part, part_status status) = 0;
  virtual void end_part() = 0;
  // A value for tools alone.
  virtual void value(std::string_view key, const compare_cell& cell) = 0;
  // A sentence for people alone.
  virtual void note(std::string_view text) = 0;
  // The heads of the rows that follow, for people: name, A, B, note.
  virtual void header(std::string_view note_title) = 0;
  // One value of each side: `key_a` and `key_b` for tools, a row for people
  // (none without a label).
  virtual void pair(std::string_view label, std::string_view key_a, const compare_cell& a,
                    std::string_view key_b, const compare_cell& b, std::string_view note) = 0;
  // Rows under `key`: for people, a row each (`lines`: a sentence each, the
  // name slot's).
  virtual void table(std::string_view key, std::span<const compare_column> columns,
                     const compare_rows& rows, bool lines) = 0;
  virtual void sides(std::span<const compare_side_row> rows) = 0;
  virtual void failures(const failure_comparison& f) = 0;
  // Whether they agree.
  virtual void finish(const comparison& c) = 0;
};

// The one description of the comparison.
void write_comparison(const comparison& c, compare_printer& out);

// What people see of a row in one slot: its cells in column order, each
// padded to its column's width, or two blanks apart where it has none.
std::string slot_text(std::span<const compare_column> columns, const std::vector<compare_cell>& row,
                      compare_slot slot);

// For people, as the outputs show them: "612", "0.875", "Slow".
std::string field_text(const layouts::field_value& value);
// "play_asset_latency[2]", "slot".
std::string field_name_text(const field_change& change);
// "612 µs"; "-" for none.
std::string micros_text(std::optional<std::uint64_t> value);
// "+0.16%"; "-" for none.
std::string percent_text(std::optional<double> percent);
// "within tolerance", "ignored (a timestamp)"...
std::string_view verdict_label(verdict v) noexcept;

// Each writes into `out`.
std::unique_ptr<compare_printer> text_compare_printer(std::string& out);
std::unique_ptr<compare_printer> json_compare_printer(std::string& out);
std::unique_ptr<compare_printer> page_compare_printer(std::string& out);

}  // namespace inspect
