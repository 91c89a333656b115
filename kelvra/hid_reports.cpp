#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/hid/IOHIDDevice.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "kelvra/collector.h"
#include "kelvra/step_output.h"
#include "quandor/hexdump.h"
#include "quandor/layouts/harvest_requests.h"
#include "quandor/service.h"

namespace {

constexpr std::int32_t vendor_usage_page = 0xFF00;
constexpr std::int32_t button_usage = 0x0020;


// { "DeviceUsagePairs": [ { "DeviceUsagePage": 0xFF00, "DeviceUsage": 0x20 } ] }
CFDictionaryRef button_usage_pairs() {
  return make_usage_pairs(make_array(
      make_usage_pair(make_number(vendor_usage_page), make_number(button_usage)),
      static_cast<CFTypeRef>(nullptr)));
}

// Stops at the first report the device refuses.
void dump_feature_reports(IOHIDDeviceRef device) {
  constexpr auto requests = layouts::step_requests(layouts::harvest_step::hid_reports);
  std::array<std::uint8_t, requests.back().capacity> report{};
  for (const layouts::harvest_request& entry : requests) {
    if (entry.path != layouts::request_path::hid_report) continue;
    write_banner(entry.banner);
    CFIndex length = static_cast<CFIndex>(report.size());
    const IOReturn result = IOHIDDeviceGetReport(
        device, kIOHIDReportTypeFeature, entry.command, report.data(), &length);
    if (result != kIOReturnSuccess) {
      kelvra_bail(entry.step_failure, result);
      return;
    }
    const auto delivered = static_cast<std::uint64_t>(
        std::clamp<CFIndex>(length, 0, static_cast<CFIndex>(report.size())));
    hexdump(report.data(), delivered, nullptr);
  }
}

}  // namespace

void dump_hid_reports() {
  CFDictionaryRef pairs = button_usage_pairs();
  if (pairs == nullptr) {
    kelvra_bail(layouts::hid_no_pairs, 0);
    return;
  }
  CFMutableDictionaryRef matching =
      CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, pairs);
  if (matching == nullptr) {
    kelvra_bail(layouts::hid_no_matching, 0);
    CFRelease(pairs);
    return;
  }
  CFDictionaryAddValue(matching, CFSTR("IOProviderClass"), CFSTR("IOHIDDevice"));

  const io_service_t service =
      IOServiceGetMatchingService(kIOMainPortDefault, matching);
  if (service == 0) {
    kelvra_bail(layouts::hid_no_service, 0);
    CFRelease(pairs);
    return;
  }
  IOHIDDeviceRef device = IOHIDDeviceCreate(kCFAllocatorDefault, service);
  if (device == nullptr) {
    kelvra_bail(layouts::hid_no_device, 0);
    IOObjectRelease(service);
    CFRelease(pairs);
    return;
  }

  const IOReturn result = IOHIDDeviceOpen(device, kIOHIDOptionsTypeNone);
  if (result != kIOReturnSuccess)
    kelvra_bail(layouts::hid_open_failed, result);
  else
    dump_feature_reports(device);

  // Closed even after a failed open.
  IOHIDDeviceClose(device, kIOHIDOptionsTypeNone);
  CFRelease(device);
  IOObjectRelease(service);
  CFRelease(pairs);
}
