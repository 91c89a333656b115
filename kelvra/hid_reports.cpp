#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/hid/IOHIDDevice.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "kelvra/collector.h"
#include "kelvra/step_output.h"
#include "quandor/hexdump.h"
#include "quandor/service.h"

namespace {

constexpr std::int32_t vendor_usage_page = 0xFF00;
constexpr std::int32_t button_usage = 0x0020;

constexpr std::int64_t line_no_pairs = 211;
constexpr std::int64_t line_no_matching = 215;
constexpr std::int64_t line_no_service = 221;
constexpr std::int64_t line_no_device = 224;
constexpr std::int64_t line_open_failed = 227;

struct feature_report {
  CFIndex id;
  const char* banner;
  std::int64_t failure_line;
};

constexpr feature_report feature_reports[] = {
    {0xe0, "==============feedscope get 0xe0 -u 0xFF00,0x0020===============", 232},
    {0xb4, "==============feedscope get 0xb4 -u 0xFF00,0x0020===============", 238},
    {0xe1, "==============feedscope get 0xe1 -u 0xFF00,0x0020===============", 244},
    {0xe2, "==============feedscope get 0xe2 -u 0xFF00,0x0020===============", 250},
    {0xe3, "==============feedscope get 0xe3 -u 0xFF00,0x0020===============", 256},
    {0xe4, "==============feedscope get 0xe4 -u 0xFF00,0x0020===============", 262},
};

// { "DeviceUsagePairs": [ { "DeviceUsagePage": 0xFF00, "DeviceUsage": 0x20 } ] }
CFDictionaryRef button_usage_pairs() {
  return make_usage_pairs(make_array(
      make_usage_pair(make_number(vendor_usage_page), make_number(button_usage)),
      static_cast<CFTypeRef>(nullptr)));
}

// Stops at the first report the device refuses.
void dump_feature_reports(IOHIDDeviceRef device) {
  std::array<std::uint8_t, 256> report{};
  for (const feature_report& entry : feature_reports) {
    write_banner(entry.banner);
    CFIndex length = static_cast<CFIndex>(report.size());
    const IOReturn result = IOHIDDeviceGetReport(
        device, kIOHIDReportTypeFeature, entry.id, report.data(), &length);
    if (result != kIOReturnSuccess) {
      kelvra_bail("result == 0 ", entry.failure_line, result);
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
    kelvra_bail("devicePairs", line_no_pairs, 0);
    return;
  }
  CFMutableDictionaryRef matching =
      CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, pairs);
  if (matching == nullptr) {
    kelvra_bail("matching", line_no_matching, 0);
    CFRelease(pairs);
    return;
  }
  CFDictionaryAddValue(matching, CFSTR("IOProviderClass"), CFSTR("IOHIDDevice"));

  const io_service_t service =
      IOServiceGetMatchingService(kIOMainPortDefault, matching);
  if (service == 0) {
    kelvra_bail("service", line_no_service, 0);
    CFRelease(pairs);
    return;
  }
  IOHIDDeviceRef device = IOHIDDeviceCreate(kCFAllocatorDefault, service);
  if (device == nullptr) {
    kelvra_bail("device", line_no_device, 0);
    IOObjectRelease(service);
    CFRelease(pairs);
    return;
  }

  const IOReturn result = IOHIDDeviceOpen(device, kIOHIDOptionsTypeNone);
  if (result != kIOReturnSuccess)
    kelvra_bail("result == 0 ", line_open_failed, result);
  else
    dump_feature_reports(device);

  // Closed even after a failed open.
  IOHIDDeviceClose(device, kIOHIDOptionsTypeNone);
  CFRelease(device);
  IOObjectRelease(service);
  CFRelease(pairs);
}
