#include "liblog_zol/text_shapes.h"

#include <array>
#include <cstring>

namespace zol {
namespace {

// The decimal text of every byte value, with the comma that follows it in
// a list.
struct byte_text {
  char chars[4];
  std::uint8_t size;
};

constexpr std::array<byte_text, 256> byte_texts = [] {
  std::array<byte_text, 256> texts{};
  for (unsigned value = 0; value < 256; ++value) {
    byte_text& text = texts[value];
    if (value >= 100) text.chars[text.size++] = static_cast<char>('0' + value / 100);
    if (value >= 10) text.chars[text.size++] = static_cast<char>('0' + value / 10 % 10);
    text.chars[text.size++] = static_cast<char>('0' + value % 10);
    text.chars[text.size++] = ',';
  }
  return texts;
}();

}  // namespace

line_builder& operator<<(line_builder& line, byte_list shape) {
  const std::size_t count = shape.bytes.size();
  if (line.has_width()) {
    std::size_t size = count ? 1 : 2;  // brackets, less the last comma
    for (const std::uint8_t byte : shape.bytes) size += byte_texts[byte].size;
    line.begin_value(size);
  }
  char* const start = line.reserve(4 * count + 2);
  char* out = start;
  *out++ = '[';
  for (const std::uint8_t byte : shape.bytes) {
    const byte_text& text = byte_texts[byte];
    std::memcpy(out, text.chars, sizeof text.chars);
    out += text.size;
  }
  // The last comma, if any, becomes the closing bracket.
  if (count) --out;
  *out++ = ']';
  line.commit(out);
  return line;
}

}  // namespace zol
