#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/byte_reader.h"

#include <cstdio>
#include <cstring>

// The platform's assertion handler, called directly so that the message names
// this library's source whatever the build's NDEBUG setting.
extern "C" [[noreturn]] void __assert_fail(const char* assertion, const char* file,
                                           unsigned int line,
                                           const char* function) noexcept;

void tmx_profile_hexdump(const char* label, const std::uint8_t* record) {
  static constexpr char digits[] = "0123456789abcdef";
  char line[256];
  std::snprintf(line, sizeof line, "%s", label);
  if (!((std::strlen(label) + 2 * profile_record_size + 1) < sizeof(line))) {
    __assert_fail("(strlen(label) + 2*bufLen + 1) < sizeof(line)",
                  "liblog_zol/ZOLProfile", 60, "tmx_profile_hexdump");
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
