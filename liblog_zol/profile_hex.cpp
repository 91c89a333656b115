#include "liblog_zol/ZOLProfile.h"

#include <cstring>

#include "liblog_zol/byte_reader.h"
#include "liblog_zol/digit_tables.h"

void write_profile_hex(char* out, const std::uint8_t* record) {
  const byte_reader reader(record, profile_record_size);
  // The record's bytes bounded once, not at every byte.
  for (const std::uint8_t byte : reader.bytes(0, profile_record_size)) {
    std::memcpy(out, zol::hex_pairs.data() + 2 * byte, 2);
    out += 2;
  }
}
