#include "liblog_zol/text_shapes.h"

#include <array>
#include <bit>
#include <cstring>

namespace zol {
namespace {

// The decimal text of every byte value with the comma that follows it in a
// list, in the low four bytes (first character lowest), and its size in the
// top byte: one load a byte.
constexpr std::array<std::uint64_t, 256> byte_texts = [] {
  std::array<std::uint64_t, 256> texts{};
  for (unsigned value = 0; value < 256; ++value) {
    char chars[4] = {};
    unsigned size = 0;
    if (value >= 100) chars[size++] = static_cast<char>('0' + value / 100);
    if (value >= 10) chars[size++] = static_cast<char>('0' + value / 10 % 10);
    chars[size++] = static_cast<char>('0' + value % 10);
    chars[size++] = ',';
    std::uint64_t text = std::uint64_t{size} << 56;
    for (unsigned i = 0; i < 4; ++i)
      text |= std::uint64_t{static_cast<unsigned char>(chars[i])} << (8 * i);
    texts[value] = text;
  }
  return texts;
}();

static_assert(std::endian::native == std::endian::little, "the characters are stored first-lowest");

std::size_t text_size(std::uint64_t text) { return static_cast<std::size_t>(text >> 56); }

}  // namespace

line_builder& operator<<(line_builder& line, byte_list shape) {
  const std::size_t count = shape.bytes.size();
  if (line.has_width()) {
    std::size_t size = count ? 1 : 2;  // brackets, less the last comma
    for (const std::uint8_t byte : shape.bytes) size += text_size(byte_texts[byte]);
    line.begin_value(size);
  }
  char* const start = line.reserve(4 * count + 2);
  char* out = start;
  *out++ = '[';
  for (const std::uint8_t byte : shape.bytes) {
    const std::uint32_t chars = static_cast<std::uint32_t>(byte_texts[byte]);
    std::memcpy(out, &chars, sizeof chars);
    out += text_size(byte_texts[byte]);
  }
  // The last comma, if any, becomes the closing bracket.
  if (count) --out;
  *out++ = ']';
  line.commit(out);
  return line;
}

}  // namespace zol
