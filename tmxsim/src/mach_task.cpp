// mach: the task port.

#include <mach/mach_init.h>

#include "call_log.h"
#include "platform.h"

namespace {

// Any non-zero port name serves: the platform does not look at it.
constexpr mach_port_t own_task = 0x103;

}  // namespace

extern "C" mach_port_t mach_task_self(void) {
  tmxsim::platform& state = tmxsim::the_platform();
  if (state.log.on()) tmxsim::log_line(state.log, "mach_task_self").returns().hex(own_task);
  return own_task;
}
