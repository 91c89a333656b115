#include "inspect/capture/number_text.h"

#include <charconv>
#include <cstdio>

#include "liblog_zol/digit_tables.h"

namespace inspect {

std::string hex_text(std::uint64_t value) {
  char digits[20];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  return "0x" + std::string(digits, end);
}

std::string hex_bytes(std::span<const std::uint8_t> bytes) {
  std::string text(2 * bytes.size(), '0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text[2 * i] = zol::hex_pairs[2 * std::size_t{bytes[i]}];
    text[2 * i + 1] = zol::hex_pairs[2 * std::size_t{bytes[i]} + 1];
  }
  return text;
}

std::string milliseconds_text(std::int64_t microseconds) {
  const std::uint64_t magnitude = microseconds < 0 ? 0 - static_cast<std::uint64_t>(microseconds)
                                                   : static_cast<std::uint64_t>(microseconds);
  std::string text = microseconds < 0 ? "-" : "";
  text += duration_ms_text(magnitude);
  return text;
}

std::string duration_ms_text(std::uint64_t microseconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%llu.%03llu", static_cast<unsigned long long>(microseconds / 1000),
                static_cast<unsigned long long>(microseconds % 1000));
  return text;
}

std::string signed_micro_text(std::int64_t value) {
  std::string text = value > 0 ? "+" : "";
  text += std::to_string(value);
  text += " µs";
  return text;
}

}  // namespace inspect
