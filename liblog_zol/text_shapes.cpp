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

// The byte's text and comma at `out`; returns their end.
char* write_byte(char* out, std::uint8_t byte) noexcept {
  const std::uint64_t text = byte_texts[byte];
  const auto chars = static_cast<std::uint32_t>(text);
  std::memcpy(out, &chars, sizeof chars);
  return out + text_size(text);
}

// "d,d,d,d," of four bytes below ten at `out`; returns its end.
char* write_small_four(char* out, std::uint32_t four) noexcept {
  std::uint64_t spread = four;
  spread = (spread | spread << 16) & 0x0000ffff0000ffffull;
  spread = (spread | spread << 8) & 0x00ff00ff00ff00ffull;
  spread += 0x2c302c302c302c30ull;  // '0' on each digit, ',' after it
  std::memcpy(out, &spread, sizeof spread);
  return out + sizeof spread;
}

}  // namespace

char* write_byte_list(char* out, std::span<const std::uint8_t> bytes) noexcept {
  *out++ = '[';
  const std::uint8_t* in = bytes.data();
  const std::uint8_t* const end = in + bytes.size();
  const std::uint8_t* const last_four = in + bytes.size() / 4 * 4;
  // Most bytes of a record are below ten: four such make "d,d,d,d," at once.
  // A lane at 0x8a or more carries into the next, but has its top bit set.
  for (; in != last_four; in += 4) {
    std::uint32_t four;
    std::memcpy(&four, in, sizeof four);
    if (((four | (four + 0x76767676u)) & 0x80808080u) == 0) {
      out = write_small_four(out, four);
      continue;
    }
    for (int i = 0; i < 4; ++i) out = write_byte(out, in[i]);
  }
  for (; in != end; ++in) out = write_byte(out, *in);
  // The last comma, if any, becomes the closing bracket.
  if (!bytes.empty()) --out;
  *out++ = ']';
  return out;
}

line_builder& operator<<(line_builder& line, byte_list shape) {
  const std::size_t count = shape.bytes.size();
  if (line.has_width()) {
    std::size_t size = count ? 1 : 2;  // brackets, less the last comma
    for (const std::uint8_t byte : shape.bytes) size += text_size(byte_texts[byte]);
    line.begin_value(size);
  }
  line.commit(write_byte_list(line.reserve(byte_list_room(count)), shape.bytes));
  return line;
}

}  // namespace zol
