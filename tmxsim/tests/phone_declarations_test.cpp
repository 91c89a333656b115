// The declarations the tool uses, pinned to the phone's own: the same
// parameter and result types, and the same enumeration types, so that code
// which builds here builds there. Checked when this file compiles.

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/hid/IOHIDDevice.h>
#include <assert.h>
#include <mach/mach_error.h>

#include <cstdint>
#include <type_traits>

namespace {

template <class declared, class phone>
constexpr bool same = std::is_same_v<declared, phone>;

// The phone's base types, by the fixed-width types they are defined with.
static_assert(same<kern_return_t, int> && same<mach_error_t, int> && same<IOReturn, int>);
static_assert(same<mach_port_t, unsigned int> && same<io_object_t, mach_port_t> &&
              same<io_service_t, io_object_t> && same<io_connect_t, io_object_t> &&
              same<io_registry_entry_t, io_object_t> && same<task_port_t, mach_port_t>);
static_assert(same<mach_vm_address_t, std::uint64_t> && same<mach_vm_size_t, std::uint64_t>);
static_assert(same<IOOptionBits, std::uint32_t> && same<io_name_t, char[128]>);
static_assert(same<CFIndex, long> && same<CFTypeID, unsigned long> &&
              same<Boolean, unsigned char> && same<CFStringEncoding, std::uint32_t>);

// IOKit and mach.
static_assert(same<decltype(IOObjectRelease), kern_return_t(io_object_t)>);
static_assert(same<decltype(IOServiceMatching), CFMutableDictionaryRef(const char*)>);
static_assert(same<decltype(IOServiceNameMatching), CFMutableDictionaryRef(const char*)>);
static_assert(same<decltype(IOServiceGetMatchingService), io_service_t(mach_port_t, CFDictionaryRef)>);
static_assert(same<decltype(IORegistryEntryGetChildEntry),
                   kern_return_t(io_registry_entry_t, const char*, io_registry_entry_t*)>);
static_assert(same<decltype(IORegistryEntryCreateCFProperty),
                   CFTypeRef(io_registry_entry_t, CFStringRef, CFAllocatorRef, IOOptionBits)>);
static_assert(same<decltype(IOServiceOpen),
                   kern_return_t(io_service_t, task_port_t, std::uint32_t, io_connect_t*)>);
static_assert(same<decltype(IOServiceClose), kern_return_t(io_connect_t)>);
static_assert(same<decltype(IOConnectCallMethod),
                   kern_return_t(mach_port_t, std::uint32_t, const std::uint64_t*, std::uint32_t,
                                 const void*, std::size_t, std::uint64_t*, std::uint32_t*, void*,
                                 std::size_t*)>);
static_assert(same<decltype(IOConnectUnmapMemory),
                   kern_return_t(io_connect_t, std::uint32_t, task_port_t, mach_vm_address_t)>);
static_assert(same<decltype(kIOMainPortDefault), const mach_port_t>);
static_assert(same<decltype(mach_task_self()), mach_port_t>);
static_assert(same<decltype(mach_error_string), char*(mach_error_t)>);
// clang makes "does not return" part of the function's type; the parameters
// are what must match.
static_assert(std::is_convertible_v<decltype(&__assert_rtn),
                                    void (*)(const char*, const char*, int, const char*)>);

// IOKit HID.
static_assert(same<decltype(IOHIDDeviceCreate), IOHIDDeviceRef(CFAllocatorRef, io_service_t)>);
static_assert(same<decltype(IOHIDDeviceOpen), IOReturn(IOHIDDeviceRef, IOOptionBits)>);
static_assert(same<decltype(IOHIDDeviceClose), IOReturn(IOHIDDeviceRef, IOOptionBits)>);
static_assert(same<decltype(IOHIDDeviceGetReport),
                   IOReturn(IOHIDDeviceRef, IOHIDReportType, CFIndex, std::uint8_t*, CFIndex*)>);
static_assert(same<decltype(kIOHIDReportTypeFeature), IOHIDReportType>);

// CoreFoundation.
static_assert(same<decltype(CFRelease), void(CFTypeRef)>);
static_assert(same<decltype(CFGetTypeID), CFTypeID(CFTypeRef)>);
static_assert(same<decltype(kCFAllocatorDefault), const CFAllocatorRef>);
static_assert(same<decltype(CFNumberCreate), CFNumberRef(CFAllocatorRef, CFNumberType, const void*)>);
static_assert(same<decltype(CFNumberGetValue), Boolean(CFNumberRef, CFNumberType, void*)>);
static_assert(same<decltype(CFStringCreateWithCString),
                   CFStringRef(CFAllocatorRef, const char*, CFStringEncoding)>);
static_assert(same<decltype(CFStringGetCStringPtr), const char*(CFStringRef, CFStringEncoding)>);
static_assert(same<decltype(CFStringGetCString),
                   Boolean(CFStringRef, char*, CFIndex, CFStringEncoding)>);
static_assert(same<decltype(CFStringGetLength), CFIndex(CFStringRef)>);
static_assert(same<decltype(CFStringGetMaximumSizeForEncoding), CFIndex(CFIndex, CFStringEncoding)>);
static_assert(same<decltype(CFArrayCreateMutable),
                   CFMutableArrayRef(CFAllocatorRef, CFIndex, const CFArrayCallBacks*)>);
static_assert(same<decltype(CFArrayAppendValue), void(CFMutableArrayRef, const void*)>);
static_assert(same<decltype(CFDictionaryCreate),
                   CFDictionaryRef(CFAllocatorRef, const void**, const void**, CFIndex,
                                   const CFDictionaryKeyCallBacks*,
                                   const CFDictionaryValueCallBacks*)>);
static_assert(same<decltype(CFDictionaryCreateMutableCopy),
                   CFMutableDictionaryRef(CFAllocatorRef, CFIndex, CFDictionaryRef)>);
static_assert(same<decltype(CFDictionaryGetValue), const void*(CFDictionaryRef, const void*)>);
static_assert(same<decltype(CFDictionarySetValue),
                   void(CFMutableDictionaryRef, const void*, const void*)>);
static_assert(same<decltype(CFDictionaryAddValue),
                   void(CFMutableDictionaryRef, const void*, const void*)>);

// The phone's constants are of enumeration types with a fixed base: a bare
// integer where one is expected does not compile.
static_assert(same<std::underlying_type_t<CFNumberType>, CFIndex> &&
              !std::is_convertible_v<int, CFNumberType>);
static_assert(same<decltype(kCFNumberIntType), CFNumberType> && kCFNumberIntType == 9 &&
              kCFNumberSInt32Type == 3 && kCFNumberLongLongType == 11);
static_assert(same<std::underlying_type_t<CFStringBuiltInEncodings>, CFStringEncoding> &&
              same<decltype(kCFStringEncodingUTF8), CFStringBuiltInEncodings> &&
              kCFStringEncodingUTF8 == 0x08000100 && kCFStringEncodingMacRoman == 0);

}  // namespace
