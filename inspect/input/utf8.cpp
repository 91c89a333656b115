#include "inspect/input/utf8.h"

#include <cstdint>
#include <cstring>

namespace inspect {

namespace {

// Lines are ASCII but for record text: skip 64 bytes, then eight, at a time
// while no byte has its high bit set.
std::size_t ascii_prefix(std::string_view text) noexcept {
  constexpr std::uint64_t high_bits = 0x8080808080808080;
  std::size_t i = 0;
  const auto word_at = [&](std::size_t at) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + at, sizeof word);
    return word;
  };
  for (const std::size_t size = text.size(); size - i >= 64; i += 64)
    if ((word_at(i) | word_at(i + 8) | word_at(i + 16) | word_at(i + 24) | word_at(i + 32) |
         word_at(i + 40) | word_at(i + 48) | word_at(i + 56)) &
        high_bits)
      break;
  for (; text.size() - i >= 8; i += 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + i, sizeof word);
    if (word & high_bits) break;
  }
  return i;
}

}  // namespace

bool valid_utf8(std::string_view text) noexcept {
  std::size_t i = ascii_prefix(text);
  const std::size_t size = text.size();
  while (i < size) {
    const auto lead = static_cast<std::uint8_t>(text[i]);
    if (lead < 0x80) {
      ++i;
      continue;
    }
    std::size_t length = 0;
    std::uint32_t code = 0;
    if (lead >= 0xc2 && lead <= 0xdf) {
      length = 2;
      code = lead & 0x1f;
    } else if (lead >= 0xe0 && lead <= 0xef) {
      length = 3;
      code = lead & 0x0f;
    } else if (lead >= 0xf0 && lead <= 0xf4) {
      length = 4;
      code = lead & 0x07;
    } else {
      return false;
    }
    if (size - i < length) return false;
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<std::uint8_t>(text[i + k]);
      if ((next & 0xc0) != 0x80) return false;
      code = (code << 6) | (next & 0x3f);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    if (overlong || (code >= 0xd800 && code <= 0xdfff) || code > 0x10ffff) return false;
    i += length;
  }
  return true;
}

}  // namespace inspect
