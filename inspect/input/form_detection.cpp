#include "inspect/input/form_detection.h"

#include <algorithm>
#include <array>

namespace inspect {

namespace {

// Tab, line ends, form feed and escape (colour) appear in text; the rest of
// the control bytes do not.
constexpr std::array<bool, 256> binary_bytes = [] {
  std::array<bool, 256> table{};
  for (int c = 0; c < 0x20; ++c) table[c] = c < 0x09 || (c >= 0x0e && c != 0x1b);
  return table;
}();

}  // namespace

input_form detect_form(std::string_view start) {
  start = start.substr(0, detection_size);
  if (std::any_of(start.begin(), start.end(),
                  [](char c) { return binary_bytes[static_cast<unsigned char>(c)]; })) {
    return input_form::raw;
  }
  std::size_t at = 0;
  while (at < start.size()) {
    const std::string_view line = start.substr(at, start.find('\n', at) - at);
    if (line.starts_with(hex_line_start)) return input_form::hex;
    if (line.starts_with(profile_line_start)) return input_form::harvest;
    at += line.size() + 1;
  }
  return input_form::harvest;
}

}  // namespace inspect
