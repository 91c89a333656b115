#include "liblog_zol/device/registry_clock.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

namespace zol {
namespace {

// A missing or non-number entry counts as 0.
std::int64_t dictionary_number(CFDictionaryRef dictionary, CFStringRef key) {
  long long value = 0;
  const void* entry = CFDictionaryGetValue(dictionary, key);
  if (entry && CFGetTypeID(entry) == CFNumberGetTypeID())
    CFNumberGetValue(static_cast<CFNumberRef>(entry), kCFNumberLongLongType, &value);
  return value;
}

}  // namespace

bool registry_clock::read(timesync_pair& pair) {
  const io_service_t service = IOServiceGetMatchingService(
      kIOMainPortDefault, IOServiceMatching("CorvelTMXTimesync"));
  if (!service) return false;
  const CFTypeRef property = IORegistryEntryCreateCFProperty(
      service, CFSTR("timesync"), kCFAllocatorDefault, 0);
  const bool usable = property && CFGetTypeID(property) == CFDictionaryGetTypeID();
  if (usable) {
    const auto dictionary = static_cast<CFDictionaryRef>(property);
    pair.tmx = dictionary_number(dictionary, CFSTR("tmx"));
    pair.calendar = dictionary_number(dictionary, CFSTR("calendar"));
  }
  if (property) CFRelease(property);
  IOObjectRelease(service);
  return usable;
}

}  // namespace zol
