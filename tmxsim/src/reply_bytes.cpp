#include "reply_bytes.h"

#include <algorithm>

namespace tmxsim {
namespace {

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool is_blank(char c) { return c == ' ' || c == '\t'; }

std::string at_character(std::string_view problem, std::size_t index) {
  return std::string(problem) + " at character " + std::to_string(index + 1);
}

}  // namespace

std::string append_hex(std::string_view hex, std::vector<std::uint8_t>& reply) {
  // Checked in full before anything is stored, so a bad text adds nothing.
  std::size_t digits = 0;
  for (std::size_t i = 0; i < hex.size(); ++i) {
    if (is_blank(hex[i])) {
      if (digits % 2 != 0) return at_character("blank inside a byte", i);
    } else if (hex_digit(hex[i]) < 0) {
      return at_character("not a hexadecimal digit", i);
    } else {
      ++digits;
    }
  }
  if (digits % 2 != 0) return "odd number of hexadecimal digits";
  if (digits / 2 > max_reply_size - reply.size())
    return "reply larger than 16 MiB";

  int high = -1;
  for (const char c : hex) {
    if (is_blank(c)) continue;
    if (high < 0) {
      high = hex_digit(c);
    } else {
      reply.push_back(static_cast<std::uint8_t>(high * 16 + hex_digit(c)));
      high = -1;
    }
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
