// Stand-ins that let the modules link until the simulated platform lands:
// a machine without a coprocessor, and no CoreFoundation objects at all.
#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/hid/IOHIDDevice.h>
#include <mach/mach_error.h>

extern "C" {
const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = nullptr;
const CFBooleanRef kCFBooleanFalse = nullptr;
const CFArrayCallBacks kCFTypeArrayCallBacks = {};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {};
const mach_port_t kIOMainPortDefault = 0;
const mach_port_t kIOMasterPortDefault = 0;

mach_port_t mach_task_self(void) { return 1; }
const char* mach_error_string(mach_error_t) { return "unknown error code"; }
CFTypeRef CFRetain(CFTypeRef cf) { return cf; }
void CFRelease(CFTypeRef) {}
CFIndex CFGetRetainCount(CFTypeRef) { return 0; }
CFTypeID CFGetTypeID(CFTypeRef) { return 0; }
Boolean CFEqual(CFTypeRef a, CFTypeRef b) { return a == b; }
CFTypeID CFBooleanGetTypeID(void) { return 1; }
Boolean CFBooleanGetValue(CFBooleanRef) { return 0; }
CFTypeID CFNumberGetTypeID(void) { return 2; }
CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType, const void*) { return nullptr; }
CFNumberType CFNumberGetType(CFNumberRef) { return 0; }
Boolean CFNumberGetValue(CFNumberRef, CFNumberType, void*) { return 0; }
CFTypeID CFStringGetTypeID(void) { return 3; }
CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char*, CFStringEncoding) { return nullptr; }
const char* CFStringGetCStringPtr(CFStringRef, CFStringEncoding) { return nullptr; }
Boolean CFStringGetCString(CFStringRef, char*, CFIndex, CFStringEncoding) { return 0; }
CFIndex CFStringGetLength(CFStringRef) { return 0; }
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding) { return length * 3; }
CFStringRef __CFStringMakeConstantString(const char*) { return nullptr; }
CFTypeID CFArrayGetTypeID(void) { return 4; }
CFArrayRef CFArrayCreate(CFAllocatorRef, const void**, CFIndex, const CFArrayCallBacks*) { return nullptr; }
CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex, const CFArrayCallBacks*) { return nullptr; }
void CFArrayAppendValue(CFMutableArrayRef, const void*) {}
CFIndex CFArrayGetCount(CFArrayRef) { return 0; }
const void* CFArrayGetValueAtIndex(CFArrayRef, CFIndex) { return nullptr; }
CFTypeID CFDictionaryGetTypeID(void) { return 5; }
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void**, const void**, CFIndex,
                                   const CFDictionaryKeyCallBacks*, const CFDictionaryValueCallBacks*) { return nullptr; }
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex, const CFDictionaryKeyCallBacks*,
                                                 const CFDictionaryValueCallBacks*) { return nullptr; }
CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef, CFIndex, CFDictionaryRef) { return nullptr; }
CFIndex CFDictionaryGetCount(CFDictionaryRef) { return 0; }
const void* CFDictionaryGetValue(CFDictionaryRef, const void*) { return nullptr; }
void CFDictionarySetValue(CFMutableDictionaryRef, const void*, const void*) {}
void CFDictionaryAddValue(CFMutableDictionaryRef, const void*, const void*) {}

kern_return_t IOObjectRelease(io_object_t) { return 0; }
CFMutableDictionaryRef IOServiceMatching(const char*) { return nullptr; }
CFMutableDictionaryRef IOServiceNameMatching(const char*) { return nullptr; }
io_service_t IOServiceGetMatchingService(mach_port_t, CFDictionaryRef) { return 0; }
kern_return_t IORegistryEntryGetChildEntry(io_registry_entry_t, const io_name_t, io_registry_entry_t*) { return kIOReturnNotFound; }
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t, CFStringRef, CFAllocatorRef, IOOptionBits) { return nullptr; }
kern_return_t IOServiceOpen(io_service_t, task_port_t, uint32_t, io_connect_t*) { return kIOReturnNotFound; }
kern_return_t IOServiceClose(io_connect_t) { return 0; }
kern_return_t IOConnectCallMethod(mach_port_t, uint32_t, const uint64_t*, uint32_t, const void*, size_t, uint64_t*,
                                  uint32_t*, void*, size_t*) { return MACH_SEND_INVALID_DEST; }
kern_return_t IOConnectUnmapMemory(io_connect_t, uint32_t, task_port_t, mach_vm_address_t) { return 0; }
CFTypeID IOHIDDeviceGetTypeID(void) { return 6; }
IOHIDDeviceRef IOHIDDeviceCreate(CFAllocatorRef, io_service_t) { return nullptr; }
IOReturn IOHIDDeviceOpen(IOHIDDeviceRef, IOOptionBits) { return kIOReturnNotOpen; }
IOReturn IOHIDDeviceClose(IOHIDDeviceRef, IOOptionBits) { return 0; }
IOReturn IOHIDDeviceGetReport(IOHIDDeviceRef, IOHIDReportType, CFIndex, uint8_t*, CFIndex*) { return kIOReturnNotOpen; }
}

#include <tmxsim/control.h>
namespace tmxsim {
std::string load_description(std::string_view, std::string_view) { return "not implemented"; }
void load_default_description() {}
std::string_view default_description() { return "{}"; }
audit_counts audit() { return {}; }
void reset_state() {}
}  // namespace tmxsim
