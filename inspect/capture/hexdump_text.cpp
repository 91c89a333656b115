#include "inspect/capture/hexdump_text.h"

#include <charconv>
#include <cstdio>

namespace inspect {
namespace {

constexpr std::size_t bytes_per_line = 16;
constexpr std::size_t half_line = 8;
constexpr std::string_view hex_digits = "0123456789abcdef";

bool shows_as_itself(std::uint8_t byte) {
  return static_cast<signed char>(byte) > 32 && byte != 127;
}

}  // namespace

std::string hexdump_line(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
  char start[16];
  std::snprintf(start, sizeof start, "%08x: ", static_cast<unsigned>(offset));
  std::string line = start;
  for (std::size_t i = 0; i < bytes_per_line; ++i) {
    if (i < bytes.size()) {
      line += hex_digits[bytes[i] >> 4];
      line += hex_digits[bytes[i] & 0xf];
      line += ' ';
    } else {
      line += "   ";
    }
    if (i + 1 == half_line) line += ' ';
  }
  line += " | ";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    line += shows_as_itself(bytes[i]) ? static_cast<char>(bytes[i]) : '.';
    if (i + 1 == half_line) line += ' ';
  }
  return line;
}

bool looks_like_hexdump(std::string_view line) {
  if (line.size() < 10 || line.substr(8, 2) != ": ") return false;
  for (const char c : line.substr(0, 8))
    if (hex_digits.find(c) == std::string_view::npos) return false;
  return true;
}

bool read_hexdump_line(std::string_view line, std::uint64_t offset, std::vector<std::uint8_t>& bytes,
                       std::string& fault) {
  std::uint8_t row[bytes_per_line];
  std::size_t count = 0;
  // Byte columns start after "xxxxxxxx: "; one more blank after the eighth.
  for (std::size_t i = 0; i < bytes_per_line; ++i) {
    const std::size_t at = 10 + 3 * i + (i >= half_line ? 1 : 0);
    if (at + 2 > line.size()) break;
    unsigned value = 0;
    const auto [end, error] = std::from_chars(line.data() + at, line.data() + at + 2, value, 16);
    if (error != std::errc{} || end != line.data() + at + 2) break;
    row[count++] = static_cast<std::uint8_t>(value);
  }
  if (hexdump_line(offset, {row, count}) != line) {
    fault = "hex dump line is not as the collector writes it at offset " + std::to_string(offset);
    return false;
  }
  bytes.insert(bytes.end(), row, row + count);
  return true;
}

}  // namespace inspect
