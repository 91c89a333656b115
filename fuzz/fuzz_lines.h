#pragma once

// The lines of a fuzz input, to check what a line reader says against.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <vector>

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

// After the last record of `records`, which the fuzz target read up to line
// `last`: the reader stays at its end and keeps `form`, and a fault names a
// later line that `may_fail` takes for one the reader could refuse.
template <class reader, class record_type, class form_type, class line_check>
void check_reader_end(reader& records, record_type& record, form_type form, std::uint64_t last,
                      line_check may_fail) {
  if (records.next(record) || records.form() != form) __builtin_trap();
  if (const auto& fault = records.fault()) {
    std::uint64_t number = 0;
    const std::string_view where = fault->where;
    if (!where.starts_with("line ") || fault->fault.empty()) __builtin_trap();
    std::from_chars(where.data() + 5, where.data() + where.size(), number);
    if (number <= last || !may_fail(number)) __builtin_trap();
  }
}
