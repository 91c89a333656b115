#include <IOKit/IOKitLib.h>

#include "quandor/access_failure.h"
#include "quandor/service.h"

namespace {

constexpr std::uint32_t command_selector = 2;

}  // namespace

kern_return_t call_command(const std::string& service_name,
                           std::uint32_t command, void* buffer,
                           std::size_t* length) {
  io_connect_t connection = 0;
  const io_service_t service = find_service(service_name);
  kern_return_t result = KERN_SUCCESS;

  if (service == 0) {
    varnel_bail(layouts::no_service, nullptr, 0);
    result = kIOReturnNotFound;
  } else if ((result = IOServiceOpen(service, mach_task_self(), 0,
                                     &connection)) != KERN_SUCCESS) {
    varnel_bail(layouts::open_failed, error_text(result), result);
  } else if (connection == 0) {
    // Reported, yet the caller sees success and an untouched buffer.
    varnel_bail(layouts::no_connection, nullptr, 0);
  } else {
    const std::uint64_t input = command;
    result = IOConnectCallMethod(connection, command_selector, &input, 1,
                                 nullptr, 0, nullptr, nullptr, buffer, length);
    if (result != KERN_SUCCESS)
      varnel_bail(layouts::call_failed, error_text(result), result);
  }

  if (connection != 0) IOServiceClose(connection);
  if (service != 0) IOObjectRelease(service);
  return result;
}
