#include "reply_bytes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace tmxsim {
namespace {

// What each character is in a hex text: a digit's value, a blank, or
// nothing allowed.
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

// What is wrong with `hex`, "" if nothing; `digits` counts its digits.
std::string hex_problem(std::string_view hex, std::size_t& digits) {
  digits = 0;
  for (std::size_t i = 0; i < hex.size(); ++i) {
    const std::uint8_t kind = hex_class(hex[i]);
    if (kind == blank) {
      if (digits % 2 != 0) return at_character("blank inside a byte", i);
    } else if (kind == not_hex) {
      return at_character("not a hexadecimal digit", i);
    } else {
      ++digits;
    }
  }
  if (digits % 2 != 0) return "odd number of hexadecimal digits";
  return "";
}

// Bulk replies run to megabytes: sixteen characters are checked and decoded
// at once (compiler vectors, so any target has them).
using chars16 = std::uint8_t __attribute__((vector_size(16)));
using pairs8 = std::uint16_t __attribute__((vector_size(16)));
using bytes8 = std::uint8_t __attribute__((vector_size(8)));

// The eight bytes that sixteen characters spell, if all sixteen are digits.
bool eight_bytes(const char* text, std::uint8_t* out) {
  chars16 chars;
  std::memcpy(&chars, text, sizeof chars);
  const chars16 folded = chars | 0x20;  // 'A'-'F' as 'a'-'f'
  const auto digits =
      ((chars >= '0') & (chars <= '9')) | ((folded >= 'a') & (folded <= 'f'));
  std::uint64_t halves[2];
  std::memcpy(halves, &digits, sizeof halves);
  if ((halves[0] & halves[1]) != UINT64_MAX) return false;
  // A letter has bit 6 set and 1 to 6 in its low bits.
  const chars16 values = (chars & 0x0f) + ((chars >> 6) & 1) * 9;
  // Little-endian: each pair of characters is one 16-bit lane, first in the low byte.
  pairs8 pairs;
  std::memcpy(&pairs, &values, sizeof pairs);
  const bytes8 bytes = __builtin_convertvector(((pairs & 0xff) << 4) | (pairs >> 8), bytes8);
  std::memcpy(out, &bytes, sizeof bytes);
  return true;
}

// Decodes `hex` into `out`, which has room for hex.size() / 2 bytes. Returns
// the number of bytes, or SIZE_MAX if the text is not pairs of digits with
// blanks between them.
std::size_t decode_hex(std::string_view hex, std::uint8_t* out) {
  const char* at = hex.data();
  const char* const end = at + hex.size();
  std::uint8_t* const start = out;
  while (at < end) {
    if (std::endian::native == std::endian::little && end - at >= 16 && eight_bytes(at, out)) {
      out += 8;
      at += 16;
      continue;
    }
    const std::uint8_t high = hex_class(*at);
    if (high == blank) {
      ++at;
      continue;
    }
    if (high == not_hex || end - at < 2) return SIZE_MAX;
    const std::uint8_t low = hex_class(at[1]);
    if (low >= blank) return SIZE_MAX;
    *out++ = static_cast<std::uint8_t>(high * 16 + low);
    at += 2;
  }
  return static_cast<std::size_t>(out - start);
}

}  // namespace

std::string append_hex(std::string_view hex, std::vector<std::uint8_t>& reply) {
  // A bad text adds nothing.
  if (hex.empty()) return "";
  const std::size_t at = reply.size();
  if (hex.size() / 2 <= max_reply_size - at) {
    reply.resize(at + hex.size() / 2);
    const std::size_t size = decode_hex(hex, reply.data() + at);
    reply.resize(size == SIZE_MAX ? at : at + size);
    if (size != SIZE_MAX) return "";
  }
  // A fault, or a text that may not fit: counted first, and named.
  std::size_t digits = 0;
  std::string problem = hex_problem(hex, digits);
  if (!problem.empty()) return problem;
  if (digits / 2 > max_reply_size - at) return "reply larger than 16 MiB";
  reply.resize(at + digits / 2);
  decode_hex(hex, reply.data() + at);
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
