// Any text as a phone description: the platform answers with the phone or
// with one printable error line naming the origin, never a crash, a hang or
// an out-of-memory.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tmxsim/control.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  const std::string error = tmxsim::load_description(json, "fuzz.json");
  const bool printable =
      std::ranges::all_of(error, [](unsigned char c) { return c >= 0x20 && c != 0x7f; });
  if (!error.empty() && (!error.starts_with("tmxsim: fuzz.json: ") || !printable))
    __builtin_trap();
  return 0;
}
