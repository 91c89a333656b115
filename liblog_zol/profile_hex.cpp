#include "liblog_zol/ZOLProfile.h"

#include <cstring>

#include "liblog_zol/byte_reader.h"
#include "liblog_zol/digit_tables.h"

void write_profile_hex(char* out, const std::uint8_t* record) {
  const byte_reader bytes(record, profile_record_size);
  for (std::size_t i = 0; i < profile_record_size; ++i, out += 2)
    std::memcpy(out, zol::hex_pairs.data() + 2 * bytes.u8(i), 2);
}
