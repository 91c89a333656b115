// Any bytes read as a POSIX TZ rule, the closing line of a zone file: a rule
// that reads gives every instant an offset within a day, and each instant a
// local time names has that local time.

#include <cstdint>
#include <string_view>

#include "inspect/capture/zone_rules.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto zone = inspect::posix_zone(text);
  if (!zone) return 0;
  // 1969, 2024 and 2554, around the year's turn and mid-year.
  for (const std::int64_t local : {-86'400LL, 1'704'067'200LL, 1'719'792'000LL, 18'446'744'073LL}) {
    for (std::int64_t step = 0; step < 86'400 * 365; step += 86'400 * 61 + 3'607) {
      const std::int32_t offset = zone->utc_offset(local + step);
      if (offset <= -86'400 || offset >= 86'400) __builtin_trap();
      std::int64_t instants[2];
      const std::size_t count = inspect::local_instants(*zone, local + step, instants);
      for (std::size_t i = 0; i < count; ++i)
        if (instants[i] + zone->utc_offset(instants[i]) != local + step) __builtin_trap();
      if (count == 2 && instants[0] >= instants[1]) __builtin_trap();
    }
  }
  return 0;
}
