#pragma once

// The text shapes of a decoded line. Each is written into the line as one
// value, so a width set before it pads the shape as a whole.

#include <cstdint>
#include <cstring>
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

line_builder& operator<<(line_builder& line, byte_list shape);

// The room write_byte_list() needs for `count` bytes.
constexpr std::size_t byte_list_room(std::size_t count) { return 4 * count + 2; }

// The list at `out`; returns its end.
char* write_byte_list(char* out, std::span<const std::uint8_t> bytes) noexcept;

// Keys and names are written many times a line: inline.

// Writes " 'key':" at `out` (room for the key and 4); returns its end.
inline char* write_key(char* out, std::string_view key) {
  const std::size_t size = key.size();
  out[0] = ' ';
  out[1] = '\'';
  // Keys run to 24 characters; two overlapping copies beat a library call.
  if (size > 16 && size <= 32) {
    std::memcpy(out + 2, key.data(), 16);
    std::memcpy(out + 2 + size - 16, key.data() + size - 16, 16);
  } else {
    copy_short(out + 2, key.data(), size);
  }
  out[size + 2] = '\'';
  out[size + 3] = ':';
  return out + size + 4;
}

inline line_builder& operator<<(line_builder& line, key_text shape) {
  // No width is ever set for a key.
  line.commit(write_key(line.reserve(shape.key.size() + 4), shape.key));
  return line;
}

inline line_builder& operator<<(line_builder& line, quoted_text shape) {
  const std::size_t size = shape.value.size();
  line.begin_value(size + 2);
  char* out = line.reserve(size + 2);
  out[0] = '\'';
  copy_short(out + 1, shape.value.data(), size);
  out[size + 1] = '\'';
  line.commit(out + size + 2);
  return line;
}



}  // namespace zol
