#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/byte_reader.h"

void write_profile_hex(char* out, const std::uint8_t* record) {
  static constexpr char digits[] = "0123456789abcdef";
  const byte_reader bytes(record, profile_record_size);
  for (std::size_t i = 0; i < profile_record_size; ++i) {
    const std::uint8_t byte = bytes.u8(i);
    *out++ = digits[byte >> 4];
    *out++ = digits[byte & 0xf];
  }
}
