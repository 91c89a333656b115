#include "quandor/hexdump.h"

#include "liblog_zol/byte_reader.h"

#include <cstdio>
#include <string>

namespace {

constexpr std::size_t bytes_per_line = 16;
constexpr std::size_t half_line = 8;
// Each piece of a line is formatted within this bound from its own start.
constexpr std::size_t piece_bound = 256;

// A blank and the upper half of the byte range (negative as signed chars)
// show as dots, as do control characters and DEL.
bool shows_as_itself(std::uint8_t byte) {
  return static_cast<signed char>(byte) > 32 && byte != 127;
}

}  // namespace

void hexdump(const void* buffer, std::uint64_t length, const char* label) {
  if (buffer == nullptr) return;
  const byte_reader bytes(buffer, length);
  char piece[piece_bound];
  for (std::uint64_t offset = 0; offset < bytes.size(); offset += bytes_per_line) {
    const auto row = bytes.bytes(offset, bytes_per_line);
    std::string line;
    if (label != nullptr) {
      std::snprintf(piece, sizeof piece, "%s ", label);
      line += piece;
    }
    std::snprintf(piece, sizeof piece, "%08x: ", static_cast<unsigned>(offset));
    line += piece;
    for (std::size_t i = 0; i < bytes_per_line; ++i) {
      if (i < row.size()) {
        std::snprintf(piece, sizeof piece, "%02x ", static_cast<unsigned>(row[i]));
        line += piece;
      } else {
        line += "   ";
      }
      if (i + 1 == half_line) line += ' ';
    }
    line += " | ";
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += shows_as_itself(row[i]) ? static_cast<char>(row[i]) : '.';
      if (i + 1 == half_line) line += ' ';
    }
    std::puts(line.c_str());
  }
}
