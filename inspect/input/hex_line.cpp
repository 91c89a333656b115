#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "inspect/input/record_lines.h"

namespace inspect {

namespace {

constexpr std::size_t digit_count = 96;

// 1 unless `c` is a hex digit. Arithmetic rather than a table, so that the
// compiler turns the loop over a line into vector code.
constexpr std::uint8_t not_hex(std::uint8_t c) {
  // Folding 'A'-'F' to 'a'-'f' folds 0x10-0x19 to digits too: not for those.
  const auto folded = static_cast<std::uint8_t>(c | 0x20);
  return static_cast<std::uint8_t>(static_cast<std::uint8_t>(c - '0') > 9 ? 1 : 0) &
         static_cast<std::uint8_t>(static_cast<std::uint8_t>(folded - 'a') > 5 ? 1 : 0);
}

// A hex digit's value: '0'-'9' are 0x3N, the letters 0x4N and 0x6N.
constexpr std::uint8_t hex_value(std::uint8_t c) {
  return static_cast<std::uint8_t>((c & 0x0f) + 9 * (c >> 6));
}

bool describe_fault(std::string_view digits, std::string& fault) {
  for (const char c : digits) {
    if (!not_hex(static_cast<std::uint8_t>(c))) continue;
    std::array<char, 64> text{};
    if (c >= 0x20 && c < 0x7f) {
      std::snprintf(text.data(), text.size(), "prof-event data holds '%c', not a hex digit", c);
    } else {
      std::snprintf(text.data(), text.size(), "prof-event data holds byte 0x%02x, not a hex digit",
                    static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    fault = text.data();
    return false;
  }
  fault = "prof-event data holds " + std::to_string(digits.size()) + " hex digits, not 96";
  return false;
}

}  // namespace

bool parse_hex_line(std::string_view line, input_record& record, std::string& fault) {
  std::string_view digits = line.substr(hex_line_start.size());
  if (digits.size() != digit_count) return describe_fault(digits, fault);
  // Every digit first, checked once after the loop: no branch inside it.
  std::array<std::uint8_t, digit_count> values{};
  std::uint8_t bad = 0;
  for (std::size_t i = 0; i < digit_count; ++i) {
    const auto c = static_cast<std::uint8_t>(digits[i]);
    bad |= not_hex(c);
    values[i] = hex_value(c);
  }
  if (bad != 0) return describe_fault(digits, fault);
  for (std::size_t i = 0; i < record.bytes.size(); ++i) {
    record.bytes[i] = static_cast<std::uint8_t>(values[2 * i] << 4 | values[2 * i + 1]);
  }
  return true;
}

}  // namespace inspect
