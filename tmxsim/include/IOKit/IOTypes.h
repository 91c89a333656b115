#ifndef TMXSIM_IOKIT_IOTYPES_H
#define TMXSIM_IOKIT_IOTYPES_H

#include <IOKit/IOReturn.h>
#include <mach/mach_types.h>
#include <stdint.h>

typedef uint32_t IOOptionBits;

typedef mach_port_t io_object_t;
typedef io_object_t io_connect_t;
typedef io_object_t io_iterator_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
typedef char io_name_t[128];

#define IO_OBJECT_NULL ((io_object_t)0)

#endif
