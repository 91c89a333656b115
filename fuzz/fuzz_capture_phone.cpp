// Any text as a capture: refused with a line, or turned into a phone that
// loads and runs a whole harvest holding nothing at its end.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/fuzz_support.h"
#include "inspect/capture/capture_reader.h"
#include "inspect/capture/phone_writer.h"
#include "kelvra/collector.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  inspect::capture_model model;
  inspect::input_fault fault;
  if (!inspect::read_capture_text(text, "fuzz.txt", {2024}, model, fault)) {
    if (fault.file != "fuzz.txt" || !fault.where.starts_with("line ") || fault.fault.empty())
      __builtin_trap();
    return 0;
  }
  std::string description;
  inspect::phone_fault phone;
  if (!inspect::write_phone(model, description, phone)) {
    if (phone.line == 0 || phone.message.empty()) __builtin_trap();
    return 0;
  }
  if (!tmxsim::load_description(description, "phone.json").empty()) __builtin_trap();
  harvest();
  trap_unless_nothing_held();
  tmxsim::reset_state();
  return 0;
}
