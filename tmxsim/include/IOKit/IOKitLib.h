#ifndef TMXSIM_IOKIT_IOKITLIB_H
#define TMXSIM_IOKIT_IOKITLIB_H

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitKeys.h>
#include <IOKit/IOReturn.h>
#include <mach/mach.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef mach_port_t io_object_t;
typedef io_object_t io_connect_t;
typedef io_object_t io_iterator_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
typedef char io_name_t[128];
typedef UInt32 IOOptionBits;

#define IO_OBJECT_NULL ((io_object_t)0)

extern const mach_port_t kIOMainPortDefault;
extern const mach_port_t kIOMasterPortDefault;

kern_return_t IOObjectRelease(io_object_t object);

CFMutableDictionaryRef IOServiceMatching(const char *name);
CFMutableDictionaryRef IOServiceNameMatching(const char *name);
/* Consumes one reference to matching. */
io_service_t IOServiceGetMatchingService(mach_port_t mainPort,
                                         CFDictionaryRef matching);

kern_return_t IORegistryEntryGetChildEntry(io_registry_entry_t entry,
                                           const io_name_t plane,
                                           io_registry_entry_t *child);
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry,
                                          CFStringRef key,
                                          CFAllocatorRef allocator,
                                          IOOptionBits options);

kern_return_t IOServiceOpen(io_service_t service, task_port_t owningTask,
                            uint32_t type, io_connect_t *connect);
kern_return_t IOServiceClose(io_connect_t connect);
kern_return_t IOConnectCallMethod(mach_port_t connection, uint32_t selector,
                                  const uint64_t *input, uint32_t inputCnt,
                                  const void *inputStruct,
                                  size_t inputStructCnt, uint64_t *output,
                                  uint32_t *outputCnt, void *outputStruct,
                                  size_t *outputStructCnt);
kern_return_t IOConnectUnmapMemory(io_connect_t connect, uint32_t memoryType,
                                   task_port_t fromTask,
                                   mach_vm_address_t atAddress);

#ifdef __cplusplus
}
#endif

#endif
