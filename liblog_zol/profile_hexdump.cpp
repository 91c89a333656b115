#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/byte_reader.h"

#include <assert.h>

#include <cstdio>
#include <cstring>

namespace {

// The assertion names this library's source and line whatever the build's
// NDEBUG setting, so the platform's assertion entry is called directly.
constexpr const char* assertion_file = "liblog_zol/ZOLProfile";
constexpr int assertion_line = 60;

}  // namespace

void tmx_profile_hexdump(const char* label, const std::uint8_t* record) {
  static constexpr char digits[] = "0123456789abcdef";
  char line[256];
  std::snprintf(line, sizeof line, "%s", label);
  if (!((std::strlen(label) + 2 * profile_record_size + 1) < sizeof(line))) {
    __assert_rtn("tmx_profile_hexdump", assertion_file, assertion_line,
                 "(strlen(label) + 2*bufLen + 1) < sizeof(line)");
  }
  const byte_reader bytes(record, profile_record_size);
  std::size_t end = std::strlen(line);
  for (std::size_t i = 0; i < profile_record_size; ++i) {
    const std::uint8_t byte = bytes.u8(i);
    line[end++] = digits[byte >> 4];
    line[end++] = digits[byte & 0xf];
  }
  line[end] = '\0';
  std::puts(line);
}
