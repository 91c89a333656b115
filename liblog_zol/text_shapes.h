#pragma once

// The text shapes of a decoded line. Each is written into the line as one
// value, so a width set before it pads the shape as a whole.

#include <cstdint>
#include <span>
#include <string_view>

#include "liblog_zol/line_builder.h"

namespace zol {

// " 'key':"
struct key_text {
  std::string_view key;
};

// "'value'"
struct quoted_text {
  std::string_view value;
};

// "[1,2,3]": the bytes in unsigned decimal, no spaces.
struct byte_list {
  std::span<const std::uint8_t> bytes;
};

line_builder& operator<<(line_builder& line, key_text shape);
line_builder& operator<<(line_builder& line, quoted_text shape);
line_builder& operator<<(line_builder& line, byte_list shape);

}  // namespace zol
