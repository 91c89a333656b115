#include <IOKit/IOKitLib.h>

#include <utility>

#include "quandor/access_failure.h"
#include "quandor/service.h"

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
    if (!quiet) varnel_bail(layouts::profiler_no_service, nullptr, 0);
    return false;
  }

  // The user client hangs below the named service; that child is opened.
  if (IORegistryEntryGetChildEntry(service, kIOServicePlane, &child) !=
      KERN_SUCCESS)
    child = 0;
  if (child == 0) {
    varnel_bail(layouts::profiler_no_child, nullptr, 0);
    return false;
  }

  const kern_return_t kr = IOServiceOpen(child, mach_task_self(), 0, &connect);
  if (kr != KERN_SUCCESS) {
    varnel_bail(layouts::profiler_open_failed, error_text(kr), kr);
    return false;
  }
  return true;
}

profiler_conn::~profiler_conn() {
  // An unmap failure changes nothing about the teardown.
  if (connect != 0 && mapped_address != 0)
    IOConnectUnmapMemory(connect, 0, mach_task_self(), mapped_address);
}
