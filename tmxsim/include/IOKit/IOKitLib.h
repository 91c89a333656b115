#ifndef TMXSIM_IOKIT_IOKITLIB_H
#define TMXSIM_IOKIT_IOKITLIB_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFRunLoop.h>
#include <IOKit/IOKitKeys.h>
#include <IOKit/IOTypes.h>
#include <mach/mach_init.h>
#include <mach/mach_types.h>

#ifdef __cplusplus
extern "C" {
#endif

extern const mach_port_t kIOMainPortDefault;

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
