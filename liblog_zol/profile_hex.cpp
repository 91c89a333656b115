#include "liblog_zol/ZOLProfile.h"

#include <cstring>

#include "liblog_zol/byte_reader.h"

void write_profile_hex(char* out, const std::uint8_t* record) {
  const byte_reader bytes(record, profile_record_size);
  // Four bytes a time: each to a 16-bit lane, its high nibble in the first
  // character, then the nibbles to digits all at once.
  for (std::size_t i = 0; i < profile_record_size; i += 4, out += 8) {
    const std::uint64_t four = bytes.u32(i);
    std::uint64_t lanes = (four & 0xffff) | ((four & 0xffff0000) << 16);
    lanes = (lanes & 0x000000ff000000ff) | ((lanes & 0x0000ff000000ff00) << 8);
    const std::uint64_t nibbles =
        ((lanes >> 4) & 0x000f000f000f000f) | ((lanes & 0x000f000f000f000f) << 8);
    const std::uint64_t letters = ((nibbles + 0x0606060606060606) >> 4) & 0x0101010101010101;
    const std::uint64_t digits = nibbles + 0x3030303030303030 + letters * ('a' - '0' - 10);
    std::memcpy(out, &digits, sizeof digits);
  }
}
