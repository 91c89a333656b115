// Asks the simulated phone for the button statistics, as a desk tool would,
// then for the same on the installed phone without a coprocessor.

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <mach/mach_error.h>
#include <tmxsim/control.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

constexpr std::size_t statistics_record_size = 282;

void report_held() {
  const tmxsim::audit_counts held = tmxsim::audit();
  std::printf("held: %ld %ld %ld %ld\n", held.io_objects, held.connections, held.cf_objects,
              held.misuse);
}

void ask_for_statistics() {
  const io_service_t service = IOServiceGetMatchingService(
      kIOMainPortDefault, IOServiceNameMatching("ZOL_zol-button"));
  if (service == 0) {
    std::printf("statistics: no service\n");
    return;
  }
  io_connect_t connection = 0;
  kern_return_t result = IOServiceOpen(service, mach_task_self(), 0, &connection);
  std::uint8_t reply[2000];
  std::size_t size = sizeof reply;
  const std::uint64_t statistics = 215;
  if (result == KERN_SUCCESS)
    result = IOConnectCallMethod(connection, 2, &statistics, 1, nullptr, 0, nullptr, nullptr,
                                 reply, &size);
  const char* text = mach_error_string(result);
  const bool whole = result == KERN_SUCCESS && size >= statistics_record_size;
  std::printf("statistics: %s, %s\n", text != nullptr ? text : "(null)",
              whole ? "a whole record" : "no whole record");
  if (connection != 0) IOServiceClose(connection);
  IOObjectRelease(service);
}

}  // namespace

int main() {
  ask_for_statistics();
  report_held();
  std::ifstream file(DEVICES_DIR "/no-coprocessor.json");
  const std::string bare{std::istreambuf_iterator<char>(file), {}};
  const std::string error = tmxsim::load_description(bare, "no-coprocessor.json");
  std::printf("installed phone: %s\n", error.empty() && !bare.empty() ? "loaded" : error.c_str());
  ask_for_statistics();
  report_held();
}
