// mach: the task port and the texts of kernel results.

#include <IOKit/IOReturn.h>
#include <mach/mach_error.h>
#include <mach/mach_init.h>
#include <mach/message.h>

#include "call_log.h"
#include "platform.h"

namespace {

// Any non-zero port name serves: the platform does not look at it.
constexpr mach_port_t own_task = 0x103;

struct error_text {
  std::uint32_t code;
  const char* text;
};

constexpr error_text error_texts[] = {
    {KERN_SUCCESS, "(os/kern) successful"},
    {MACH_SEND_INVALID_DEST, "(ipc/send) invalid destination port"},
    {0xe00002bc, "(iokit/common) general error"},
    {0xe00002bd, "(iokit/common) memory allocation error"},
    {0xe00002be, "(iokit/common) resource shortage"},
    {0xe00002bf, "(iokit/common) Mach IPC failure"},
    {0xe00002c0, "(iokit/common) no such device"},
    {0xe00002c1, "(iokit/common) privilege violation"},
    {0xe00002c2, "(iokit/common) invalid argument"},
    {0xe00002c3, "(iokit/common) device is read locked"},
    {0xe00002c4, "(iokit/common) device is write locked"},
    {0xe00002c5, "(iokit/common) exclusive access and device already open"},
    {0xe00002c6, "(iokit/common) sent and received messages had different msg_id"},
    {0xe00002c7, "(iokit/common) unsupported function"},
    {0xe00002c8, "(iokit/common) misc. VM failure"},
    {0xe00002c9, "(iokit/common) internal driver error"},
    {0xe00002ca, "(iokit/common) I/O error"},
    {0xe00002cc, "(iokit/common) cannot acquire lock"},
    {0xe00002cd, "(iokit/common) device is not open"},
    {0xe00002ce, "(iokit/common) read not supported"},
    {0xe00002cf, "(iokit/common) write not supported"},
    {0xe00002d0, "(iokit/common) alignment error"},
    {0xe00002d1, "(iokit/common) media error"},
    {0xe00002d2, "(iokit/common) device is still open"},
    {0xe00002d3, "(iokit/common) rld failure"},
    {0xe00002d4, "(iokit/common) DMA failure"},
    {0xe00002d5, "(iokit/common) device is busy"},
    {0xe00002d6, "(iokit/common) I/O timeout"},
    {0xe00002d7, "(iokit/common) device is offline"},
    {0xe00002d8, "(iokit/common) device is not ready"},
    {0xe00002d9, "(iokit/common) device or channel is not attached"},
    {0xe00002da, "(iokit/common) no DMA channels available"},
    {0xe00002db, "(iokit/common) no space for data"},
    {0xe00002dd, "(iokit/common) port already exists"},
    {0xe00002de, "(iokit/common) cannot wire physical memory"},
    {0xe00002df, "(iokit/common) no interrupt attached"},
    {0xe00002e0, "(iokit/common) no DMA frames enqueued"},
    {0xe00002e1, "(iokit/common) oversized message received on interrupt port"},
    {0xe00002e2, "(iokit/common) not permitted"},
    {0xe00002e3, "(iokit/common) no power to device"},
    {0xe00002e4, "(iokit/common) media not present"},
    {0xe00002e5, "(iokit/common) media not formatted"},
    {0xe00002e6, "(iokit/common) no such mode"},
    {0xe00002e7, "(iokit/common) data underrun"},
    {0xe00002e8, "(iokit/common) data overrun"},
    {0xe00002e9, "(iokit/common) the device is not working properly"},
    {0xe00002ea, "(iokit/common) a completion routine is required"},
    {0xe00002eb, "(iokit/common) operation was aborted"},
    {0xe00002ec, "(iokit/common) bus bandwidth would be exceeded"},
    {0xe00002ed, "(iokit/common) device not responding"},
    {0xe00002ee, "(iokit/common) I/O request for the distant past"},
    {0xe00002ef, "(iokit/common) I/O request for the distant future"},
    {0xe00002f0, "(iokit/common) data was not found"},
};

}  // namespace

extern "C" {

mach_port_t mach_task_self(void) {
  tmxsim::platform& state = tmxsim::the_platform();
  if (state.log.on()) tmxsim::log_line(state.log, "mach_task_self").returns().hex(own_task);
  return own_task;
}

char* mach_error_string(mach_error_t error_value) {
  tmxsim::platform& state = tmxsim::the_platform();
  const auto code = static_cast<std::uint32_t>(error_value);
  const char* text = "unknown error code";
  for (const error_text& known : error_texts)
    if (known.code == code) text = known.text;
  if (state.log.on()) tmxsim::log_line(state.log, "mach_error_string").hex(code).returns().quoted(text);
  return const_cast<char*>(text);
}

}  // extern "C"
