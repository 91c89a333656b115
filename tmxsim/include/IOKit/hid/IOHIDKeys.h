#ifndef TMXSIM_IOKIT_HID_IOHIDKEYS_H
#define TMXSIM_IOKIT_HID_IOHIDKEYS_H

#include <stdint.h>

#define kIOHIDDeviceKey "IOHIDDevice"
#define kIOHIDDeviceUsagePairsKey "DeviceUsagePairs"
#define kIOHIDDeviceUsagePageKey "DeviceUsagePage"
#define kIOHIDDeviceUsageKey "DeviceUsage"

typedef enum IOHIDReportType {
  kIOHIDReportTypeInput = 0,
  kIOHIDReportTypeOutput,
  kIOHIDReportTypeFeature,
  kIOHIDReportTypeCount
} IOHIDReportType;

enum { kIOHIDOptionsTypeNone = 0x00, kIOHIDOptionsTypeSeizeDevice = 0x01 };
typedef uint32_t IOHIDOptionsType;

#endif
