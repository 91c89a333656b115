// A whole `kelvra --harvest` over any phone a description can express. Every
// run must end holding nothing of the platform's.

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string_view>

#include "fuzz/fuzz_support.h"
#include "kelvra/collector.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  // A refused description is fuzz_description's concern; the empty machine
  // is in the seeds.
  if (!tmxsim::load_description(json, "fuzz.json").empty()) return 0;
  harvest();
  trap_unless_nothing_held();
  // A failure line must leave standard error usable for the next one.
  if (!std::cout.good() || !std::cerr.good()) __builtin_trap();
  tmxsim::reset_state();
  return 0;
}
