// The child the startup test runs with TMXSIM_LOG set: it keeps a service it
// looked up and releases a handle it never had, so the audit written at exit
// has one leak and one misuse to count. A program of its own, as the log is
// opened when the platform starts, before main.

#include <IOKit/IOKitLib.h>

int main() {
  const io_service_t kept =
      IOServiceGetMatchingService(kIOMainPortDefault, IOServiceNameMatching("ZOL_zol-button"));
  static_cast<void>(kept);
  IOObjectRelease(0x7777);
  return 0;
}
