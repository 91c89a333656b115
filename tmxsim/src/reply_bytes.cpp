#include "reply_bytes.h"

#include <algorithm>
#include <array>

namespace tmxsim {
namespace {

// What each character is in a hex text: a digit's value, a blank, or
// nothing allowed. Bulk replies run to megabytes, so one look-up a character.
constexpr std::uint8_t blank = 16;
constexpr std::uint8_t not_hex = 255;

constexpr std::array<std::uint8_t, 256> hex_classes = [] {
  std::array<std::uint8_t, 256> classes{};
  classes.fill(not_hex);
  for (std::uint8_t value = 0; value < 16; ++value) {
    constexpr std::string_view lower = "0123456789abcdef";
    constexpr std::string_view upper = "0123456789ABCDEF";
    classes[static_cast<unsigned char>(lower[value])] = value;
    classes[static_cast<unsigned char>(upper[value])] = value;
  }
  classes[' '] = blank;
  classes['\t'] = blank;
  return classes;
}();

std::uint8_t hex_class(char c) { return hex_classes[static_cast<unsigned char>(c)]; }

std::string at_character(std::string_view problem, std::size_t index) {
  return std::string(problem) + " at character " + std::to_string(index + 1);
}

}  // namespace

std::string append_hex(std::string_view hex, std::vector<std::uint8_t>& reply) {
  // Checked in full before anything is stored, so a bad text adds nothing.
  std::size_t digits = 0;
  for (std::size_t i = 0; i < hex.size();) {
    // Eight digits in a row, the common case, in one step.
    if (hex.size() - i >= 8) {
      std::uint8_t kinds = 0;
      for (std::size_t k = 0; k < 8; ++k) kinds |= hex_class(hex[i + k]);
      if (kinds < blank) {
        digits += 8;
        i += 8;
        continue;
      }
    }
    const std::uint8_t kind = hex_class(hex[i]);
    if (kind == blank) {
      if (digits % 2 != 0) return at_character("blank inside a byte", i);
    } else if (kind == not_hex) {
      return at_character("not a hexadecimal digit", i);
    } else {
      ++digits;
    }
    ++i;
  }
  if (digits % 2 != 0) return "odd number of hexadecimal digits";
  if (digits / 2 > max_reply_size - reply.size())
    return "reply larger than 16 MiB";

  // Blanks stand only between bytes: every digit here starts a pair.
  std::size_t at = reply.size();
  reply.resize(at + digits / 2);
  for (std::size_t i = 0; i < hex.size();) {
    const std::uint8_t high = hex_class(hex[i]);
    if (high == blank) {
      ++i;
      continue;
    }
    reply[at++] = static_cast<std::uint8_t>(high * 16 + hex_class(hex[i + 1]));
    i += 2;
  }
  return "";
}

void append_little_endian(std::vector<std::uint8_t>& reply, std::uint64_t value,
                          std::size_t size) {
  for (std::size_t i = 0; i < size; ++i)
    reply.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void append_text(std::vector<std::uint8_t>& reply, std::string_view text,
                 std::size_t size) {
  const std::string_view kept = text.substr(0, std::min(text.size(), size));
  reply.insert(reply.end(), kept.begin(), kept.end());
  reply.insert(reply.end(), size - kept.size(), 0);
}

}  // namespace tmxsim
