#ifndef TMXSIM_MACH_MACH_TYPES_H
#define TMXSIM_MACH_MACH_TYPES_H

#include <mach/kern_return.h>
#include <mach/port.h>
#include <mach/vm_types.h>

typedef mach_port_t task_t;
typedef mach_port_t task_port_t;

#endif
