#include "utf8.h"

#include <cstdint>
#include <cstring>

namespace tmxsim {
namespace {

// The allowed range of the second byte for each lead byte: it rules out
// overlong forms (E0, F0), surrogates (ED) and code points past U+10FFFF (F4).
struct lead_rule {
  unsigned char first;
  unsigned char last;
  int continuation;
  unsigned char second_min;
  unsigned char second_max;
};

constexpr lead_rule lead_rules[] = {
    {0xc2, 0xdf, 1, 0x80, 0xbf},
    {0xe0, 0xe0, 2, 0xa0, 0xbf},
    {0xe1, 0xec, 2, 0x80, 0xbf},
    {0xed, 0xed, 2, 0x80, 0x9f},
    {0xee, 0xef, 2, 0x80, 0xbf},
    {0xf0, 0xf0, 3, 0x90, 0xbf},
    {0xf1, 0xf3, 3, 0x80, 0xbf},
    {0xf4, 0xf4, 3, 0x80, 0x8f},
};

const lead_rule* rule_for(unsigned char lead) {
  for (const lead_rule& rule : lead_rules)
    if (lead >= rule.first && lead <= rule.last) return &rule;
  return nullptr;
}

// Sixteen bytes, as two words; a vector where the target has one.
using block = std::uint64_t __attribute__((vector_size(16)));

block block_at(const char* data) {
  block part;
  std::memcpy(&part, data, sizeof part);
  return part;
}

std::uint64_t word_at(const char* data) {
  std::uint64_t word;
  std::memcpy(&word, data, sizeof word);
  return word;
}

// The length of the ASCII run at the start of `text`: 32 bytes at a time,
// then eight, then one.
std::size_t ascii_prefix(std::string_view text) {
  constexpr std::uint64_t high_bits = 0x8080808080808080;
  std::size_t i = 0;
  for (; i + 32 <= text.size(); i += 32) {
    std::uint64_t words[4];
    std::memcpy(words, text.data() + i, sizeof words);
    if (((words[0] | words[1] | words[2] | words[3]) & high_bits) != 0) break;
  }
  for (; i + 8 <= text.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + i, sizeof word);
    if ((word & high_bits) != 0) break;
  }
  while (i < text.size() && static_cast<unsigned char>(text[i]) < 0x80) ++i;
  return i;
}

}  // namespace

bool is_valid_utf8(std::string_view text) {
  std::size_t i = ascii_prefix(text);
  while (i < text.size()) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80) {
      ++i;
      continue;
    }
    const lead_rule* rule = rule_for(lead);
    if (rule == nullptr || text.size() - i <= static_cast<std::size_t>(rule->continuation))
      return false;
    const auto second = static_cast<unsigned char>(text[i + 1]);
    if (second < rule->second_min || second > rule->second_max) return false;
    for (int k = 2; k <= rule->continuation; ++k)
      if ((static_cast<unsigned char>(text[i + k]) & 0xc0) != 0x80) return false;
    i += 1 + rule->continuation;
  }
  return true;
}

// Every line the tool prints passes through here, nearly always ASCII: the
// bytes are ORed together 64 at a time, with no early exit.
bool is_ascii(std::string_view text) {
  constexpr std::uint64_t high_bits = 0x8080808080808080;
  const char* data = text.data();
  const std::size_t size = text.size();
  if (size < 16) {
    if (size >= 8) return ((word_at(data) | word_at(data + size - 8)) & high_bits) == 0;
    unsigned bits = 0;
    for (std::size_t i = 0; i < size; ++i) bits |= static_cast<unsigned char>(data[i]);
    return bits < 0x80;
  }
  // The last 16 bytes first: the loops below may stop short of them.
  block any = block_at(data + size - 16);
  std::size_t i = 0;
  for (; i + 64 <= size; i += 64)
    any |= block_at(data + i) | block_at(data + i + 16) | block_at(data + i + 32) |
           block_at(data + i + 48);
  for (; i + 16 <= size; i += 16) any |= block_at(data + i);
  return ((any[0] | any[1]) & high_bits) == 0;
}

std::size_t utf16_length(std::string_view text) {
  std::size_t units = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xc0) != 0x80) ++units;  // one per code point
    if (byte >= 0xf0) ++units;           // and a second for a surrogate pair
  }
  return units;
}

}  // namespace tmxsim
