// Any text as a phone description: the platform answers with the phone or
// with one printable error line naming the origin, never a crash, a hang or
// an out-of-memory.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tmxsim/control.h"

namespace {

bool one_printable_line(const std::string& text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  const std::string error = tmxsim::load_description(json, "fuzz.json");
  if (!error.empty() &&
      (!error.starts_with("tmxsim: fuzz.json: ") || !one_printable_line(error)))
    __builtin_trap();
  return 0;
}
