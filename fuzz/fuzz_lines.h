#pragma once

// The lines of a fuzz input, to check what a line reader says against.

#include <algorithm>
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
