#pragma once

// The lines of a fuzz input, to check what a line reader says against.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

#include "inspect/input/input_reader.h"

inline std::vector<std::string_view> lines_of(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

// Line `number` (from 1) exists and starts with `prefix`.
inline bool line_starts_with(const std::vector<std::string_view>& lines, std::uint64_t number,
                             std::string_view prefix) {
  return number >= 1 && number <= lines.size() && lines[number - 1].starts_with(prefix);
}

// `text` through the record reader as `form`: each record comes from a line
// that starts with `prefix`, later than the one before, and `record_ok`
// takes it with its first line; after the last the reader stays at its end;
// each damage names a line of the input, or a byte within it.
template <class record_test>
void check_line_reader(std::string_view text, inspect::input_form form, std::string_view prefix,
                       record_test record_ok) {
  const auto lines = lines_of(text);
  inspect::input_fault fault;
  auto input = inspect::open_input(inspect::memory_source(text), "fuzz", {form, nullptr}, fault);
  if (!input) {
    if (!text.empty() || fault.fault.empty()) __builtin_trap();
    return;
  }
  inspect::damage_log damage("fuzz", nullptr);
  const auto records = inspect::read_records(std::move(*input), damage);
  inspect::input_record record;
  std::uint64_t last = 0;
  while (records->next(record)) {
    if (record.line <= last || record.last_line < record.line ||
        !line_starts_with(lines, record.line, prefix) || !record_ok(lines[record.line - 1], record))
      __builtin_trap();
    last = record.last_line;
  }
  if (records->next(record)) __builtin_trap();
  for (const inspect::problem& d : damage.entries()) {
    if (inspect::problem_text(d).empty() || (d.line == 0 && !d.byte) || d.line > lines.size() + 1 ||
        (d.byte && *d.byte > text.size()))
      __builtin_trap();
  }
}
