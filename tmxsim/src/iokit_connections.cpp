// IOKit: user-client connections and the calls made on them.

#include <IOKit/IOKitLib.h>
#include <mach/message.h>

#include <string>

#include "call_log.h"
#include "platform.h"

using tmxsim::log_line;
using tmxsim::platform;

namespace {

// Selector 2 is answered from "commands", keyed by its one scalar input.
constexpr std::uint32_t command_selector = 2;

// The live connection `connect` names, or nullptr: a call on 0 is refused,
// a call on anything else that is not open is refused and counted.
const tmxsim::handle_slot* find_connection(platform& state, io_connect_t connect) {
  const tmxsim::handle_slot* slot = state.handles.find(connect);
  if (slot != nullptr && slot->kind == tmxsim::handle_kind::connection) return slot;
  if (connect != 0) tmxsim::count_misuse(state, "call on a closed connection");
  return nullptr;
}

std::string scalars(const std::uint64_t* input, std::uint32_t count) {
  std::string text = "input=[";
  for (std::uint32_t i = 0; input != nullptr && i < count; ++i)
    text += (i > 0 ? ", " : "") + std::to_string(input[i]);
  return text + "]";
}

}  // namespace

extern "C" {

kern_return_t IOServiceOpen(io_service_t service, task_port_t, uint32_t type,
                            io_connect_t* connect) {
  platform& state = tmxsim::the_platform();
  kern_return_t result = kIOReturnBadArgument;
  io_connect_t opened = 0;
  const tmxsim::handle_slot* slot = tmxsim::find_entry(state, service);
  if (slot != nullptr && connect != nullptr) {
    if (slot->entry.hid) {
      result = kIOReturnUnsupported;
    } else {
      const tmxsim::service_description& described =
          state.phone.model.services[slot->entry.index];
      result = static_cast<kern_return_t>(described.open_result);
      if (result == KERN_SUCCESS && !described.null_connection) {
        opened = state.handles.add(tmxsim::handle_kind::connection, slot->entry);
        if (opened == 0) result = kIOReturnNoResources;
      }
    }
  }
  if (connect != nullptr) *connect = opened;
  if (state.log.on())
    log_line(state.log, "IOServiceOpen")
        .hex(service)
        .word("type=" + std::to_string(type))
        .returns()
        .hex(static_cast<std::uint32_t>(result))
        .hex(opened);
  return result;
}

kern_return_t IOServiceClose(io_connect_t connect) {
  platform& state = tmxsim::the_platform();
  kern_return_t result = MACH_SEND_INVALID_DEST;
  if (find_connection(state, connect) != nullptr) {
    state.handles.remove(connect);
    result = KERN_SUCCESS;
  }
  if (state.log.on())
    log_line(state.log, "IOServiceClose").hex(connect).returns().hex(static_cast<std::uint32_t>(result));
  return result;
}

kern_return_t IOConnectCallMethod(mach_port_t connection, uint32_t selector,
                                  const uint64_t* input, uint32_t inputCnt,
                                  const void*, size_t, uint64_t*, uint32_t* outputCnt,
                                  void* outputStruct, size_t* outputStructCnt) {
  platform& state = tmxsim::the_platform();
  const std::size_t capacity =
      outputStruct != nullptr && outputStructCnt != nullptr ? *outputStructCnt : 0;
  kern_return_t result = MACH_SEND_INVALID_DEST;
  std::size_t delivered = 0;
  if (const tmxsim::handle_slot* slot = find_connection(state, connection)) {
    tmxsim::service_description& service = state.phone.model.services[slot->entry.index];
    if (selector == command_selector && (input == nullptr || inputCnt != 1)) {
      result = kIOReturnBadArgument;
    } else {
      tmxsim::answer_list* answers = selector == command_selector
                                         ? tmxsim::find_answers(service.commands, input[0])
                                         : tmxsim::find_answers(service.methods, selector);
      const tmxsim::call_answer answer = tmxsim::answer_call(answers, outputStruct, capacity);
      result = static_cast<kern_return_t>(answer.result);
      delivered = answer.delivered;
    }
    if (result == KERN_SUCCESS) {
      if (outputStructCnt != nullptr) *outputStructCnt = delivered;
      if (outputCnt != nullptr) *outputCnt = 0;
    }
  }
  if (state.log.on()) {
    log_line line(state.log, "IOConnectCallMethod");
    line.hex(connection)
        .word("selector=" + std::to_string(selector))
        .word(scalars(input, inputCnt))
        .word("capacity=" + std::to_string(capacity))
        .returns()
        .hex(static_cast<std::uint32_t>(result));
    if (result == KERN_SUCCESS) line.word("delivered=" + std::to_string(delivered));
  }
  return result;
}

kern_return_t IOConnectUnmapMemory(io_connect_t connect, uint32_t memoryType,
                                   task_port_t, mach_vm_address_t atAddress) {
  platform& state = tmxsim::the_platform();
  // Nothing is ever mapped, so there is nothing to unmap.
  const kern_return_t result = find_connection(state, connect) != nullptr
                                   ? kIOReturnBadArgument
                                   : MACH_SEND_INVALID_DEST;
  if (state.log.on())
    log_line(state.log, "IOConnectUnmapMemory")
        .hex(connect)
        .word("type=" + std::to_string(memoryType))
        .hex(atAddress)
        .returns()
        .hex(static_cast<std::uint32_t>(result));
  return result;
}

}  // extern "C"
