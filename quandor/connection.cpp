#include <IOKit/IOKitLib.h>

#include <utility>

#include "quandor/access_failure.h"
#include "quandor/service.h"

namespace {

constexpr std::int64_t line_no_service = 1943;
constexpr std::int64_t line_no_child = 1946;
constexpr std::int64_t line_open_failed = 1949;

}  // namespace

service_conn::service_conn(std::string service_name)
    : name(std::move(service_name)) {}

service_conn::~service_conn() {
  if (connect != 0) IOServiceClose(connect);
  if (child != 0) IOObjectRelease(child);
  if (service != 0) IOObjectRelease(service);
}

bool service_conn::open(bool quiet) {
  CFMutableDictionaryRef matching = IOServiceNameMatching(name.c_str());
  service = matching != nullptr
                ? IOServiceGetMatchingService(kIOMainPortDefault, matching)
                : 0;
  if (service == 0) {
    if (!quiet) varnel_bail("service", nullptr, line_no_service, 0);
    return false;
  }

  // The user client hangs below the named service; that child is opened.
  if (IORegistryEntryGetChildEntry(service, kIOServicePlane, &child) !=
      KERN_SUCCESS)
    child = 0;
  if (child == 0) {
    varnel_bail("child", nullptr, line_no_child, 0);
    return false;
  }

  const kern_return_t kr = IOServiceOpen(child, mach_task_self(), 0, &connect);
  if (kr != KERN_SUCCESS) {
    varnel_bail("kr == 0 ", error_text(kr), line_open_failed, kr);
    return false;
  }
  return true;
}

profiler_conn::~profiler_conn() {
  // An unmap failure changes nothing about the teardown.
  if (connect != 0 && mapped_address != 0)
    IOConnectUnmapMemory(connect, 0, mach_task_self(), mapped_address);
}
