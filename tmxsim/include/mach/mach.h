#ifndef TMXSIM_MACH_MACH_H
#define TMXSIM_MACH_MACH_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int kern_return_t;
typedef kern_return_t mach_error_t;
typedef unsigned int natural_t;
typedef natural_t mach_port_t;
typedef mach_port_t task_t;
typedef mach_port_t task_port_t;
typedef uint64_t mach_vm_address_t;
typedef uint64_t mach_vm_size_t;

#define KERN_SUCCESS 0
#define MACH_PORT_NULL ((mach_port_t)0)
#define MACH_SEND_INVALID_DEST 0x10000003

/* The calling task's port. */
mach_port_t mach_task_self(void);

#ifdef __cplusplus
}
#endif

#endif
