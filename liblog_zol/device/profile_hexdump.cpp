#include <assert.h>

#include <cstdio>
#include <cstring>

#include "liblog_zol/ZOLProfile.h"

namespace {

// The assertion names this library's source and line whatever the build's
// NDEBUG setting, so the platform's assertion entry is called directly.
constexpr const char* assertion_file = "liblog_zol/ZOLProfile";
constexpr int assertion_line = 60;

}  // namespace

void tmx_profile_hexdump(const char* label, const std::uint8_t* record) {
  char line[256];
  std::snprintf(line, sizeof line, "%s", label);
  if (!((std::strlen(label) + 2 * profile_record_size + 1) < sizeof(line))) {
    __assert_rtn("tmx_profile_hexdump", assertion_file, assertion_line,
                 "(strlen(label) + 2*bufLen + 1) < sizeof(line)");
  }
  const std::size_t end = std::strlen(line);
  write_profile_hex(line + end, record);
  line[end + 2 * profile_record_size] = '\0';
  std::puts(line);
}
