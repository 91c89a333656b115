#pragma once

// The lines of a fuzz input, to check what a line reader says against.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

#include "inspect/input/record_input.h"

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
// takes it with its line; after the last, the reader stays at its end and
// keeps its form, and a fault names a later line that starts with `prefix`.
template <class record_test>
void check_line_reader(std::string_view text, inspect::input_form form, std::string_view prefix,
                       record_test record_ok) {
  static std::FILE* const discard = std::fopen("/dev/null", "w");
  const auto lines = lines_of(text);
  const auto records =
      inspect::open_records(inspect::memory_source(text), "fuzz", {form, false, discard});
  inspect::input_record record;
  std::uint64_t last = 0;
  while (records->next(record)) {
    if (record.line <= last || !line_starts_with(lines, record.line, prefix) ||
        !record_ok(lines[record.line - 1], record))
      __builtin_trap();
    last = record.line;
  }
  if (records->next(record) || records->form() != form) __builtin_trap();
  if (const auto& fault = records->fault()) {
    std::uint64_t number = 0;
    const std::string_view where = fault->where;
    if (!where.starts_with("line ") || fault->fault.empty()) __builtin_trap();
    std::from_chars(where.data() + 5, where.data() + where.size(), number);
    if (number <= last || !line_starts_with(lines, number, prefix)) __builtin_trap();
  }
}
