// A whole `kelvra --harvest` over any phone a description can express. Every
// run must end holding nothing of the platform's: no handle, no connection,
// no CoreFoundation object, no misuse.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/quiet_output.h"
#include "kelvra/collector.h"
#include "tmxsim/control.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  silence_reports();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  // A refused description is fuzz_description's concern; the empty machine
  // is in the seeds.
  if (!tmxsim::load_description(json, "fuzz.json").empty()) return 0;
  harvest();
  const tmxsim::audit_counts held = tmxsim::audit();
  if (held.io_objects != 0 || held.connections != 0 || held.cf_objects != 0 ||
      held.misuse != 0)
    __builtin_trap();
  tmxsim::reset_state();
  return 0;
}
