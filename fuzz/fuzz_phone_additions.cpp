// Any text as additions to the default phone: refused with the item and the
// fault, or a phone the platform loads or refuses with its own line, and
// that runs a whole harvest holding nothing at its end.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/fuzz_support.h"
#include "inspect/outputs/phone_additions.h"
#include "kelvra/collector.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  static const inspect::phone_description default_phone =
      inspect::phone_description::parse(tmxsim::default_description());
  inspect::phone_description phone = default_phone;
  inspect::addition_fault fault;
  if (!inspect::add_to_phone(phone, text, fault)) {
    if (fault.where.empty() || fault.message.empty()) __builtin_trap();
    return 0;
  }
  if (!tmxsim::load_description(inspect::phone_text(phone), "phone.json").empty()) return 0;
  harvest();
  trap_unless_nothing_held();
  tmxsim::reset_state();
  return 0;
}
