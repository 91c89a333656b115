#ifndef TMXSIM_IOKIT_HID_IOHIDDEVICE_H
#define TMXSIM_IOKIT_HID_IOHIDDEVICE_H

#include <IOKit/IOKitLib.h>
#include <IOKit/hid/IOHIDKeys.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __IOHIDDevice *IOHIDDeviceRef;

CFTypeID IOHIDDeviceGetTypeID(void);
IOHIDDeviceRef IOHIDDeviceCreate(CFAllocatorRef allocator,
                                 io_service_t service);
IOReturn IOHIDDeviceOpen(IOHIDDeviceRef device, IOOptionBits options);
IOReturn IOHIDDeviceClose(IOHIDDeviceRef device, IOOptionBits options);
IOReturn IOHIDDeviceGetReport(IOHIDDeviceRef device, IOHIDReportType reportType,
                              CFIndex reportID, uint8_t *report,
                              CFIndex *pReportLength);

#ifdef __cplusplus
}
#endif

#endif
