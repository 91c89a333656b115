// mach: the texts of kernel results.

#include <mach/mach_error.h>

#include <cstdint>

#include "call_log.h"
#include "mach_error_texts.h"
#include "platform.h"

namespace {

// Results of old interfaces, given as small numbers, are read as the
// results that replaced them: a run of 100 numbers counting away from
// `first` in the direction of `step` lands on codes 0..99 from `base`.
struct old_numbers {
  std::int32_t first;
  std::int32_t step;
  std::uint32_t base;
};

constexpr old_numbers old_number_runs[] = {
    {-100, -1, 0x0c000000},  // ipc/send
    {-200, -1, 0x0c004000},  // ipc/rcv
    {-300, -1, 0x10008000},  // mig, on today's system rather than the old one
    {1000, 1, 0x08000000},   // server/netname
    {1600, 1, 0x08004000},   // server/env_mgr
    {27600, 1, 0x08008000},  // server/execd
};

std::uint32_t current_number(mach_error_t value) {
  for (const old_numbers& run : old_number_runs) {
    const std::int64_t offset = (std::int64_t{value} - run.first) * run.step;
    if (offset >= 0 && offset < 100) return run.base + static_cast<std::uint32_t>(offset);
  }
  return static_cast<std::uint32_t>(value);
}

constexpr std::uint32_t iokit_system = 0x38;
constexpr std::uint32_t no_entry = UINT32_MAX;

// iokit/common keeps its texts packed: the lone code 0x001, then the run
// from 0x2bc.
std::uint32_t iokit_common_entry(std::uint32_t code) {
  if (code == 0x001) return 0;
  if (code >= 0x2bc && code <= 0x2f0) return code - 0x2bc + 1;
  return no_entry;
}

const char* error_text(mach_error_t value) {
  const std::uint32_t number = current_number(value);
  const std::uint32_t system_number = number >> 26;
  const std::uint32_t subsystem = (number >> 14) & 0xfff;
  std::uint32_t code = number & 0x3fff;

  const tmxsim::error_system& system = tmxsim::error_systems[system_number];
  if (system.unknown_subsystem == nullptr) return nullptr;
  // iokit maps subsystems 0xffe and 0xfff to slots 10 and 11, past the
  // phone's nine, so a bound check alone decides there too.
  if (subsystem >= system.subsystems.size()) return system.unknown_subsystem;
  if (system_number == iokit_system && subsystem == 0) code = iokit_common_entry(code);
  const tmxsim::error_code_texts texts = system.subsystems[subsystem];
  return code < texts.size() ? texts[code] : tmxsim::unknown_error_code;
}

}  // namespace

extern "C" char* mach_error_string(mach_error_t error_value) {
  tmxsim::platform& state = tmxsim::the_platform();
  const char* text = error_text(error_value);
  if (state.log.on())
    tmxsim::log_line(state.log, "mach_error_string")
        .hex(static_cast<std::uint32_t>(error_value))
        .returns()
        .quoted(text);
  // The texts are static and callers never write to them; the phone's
  // declaration just lacks the const.
  return const_cast<char*>(text);
}
