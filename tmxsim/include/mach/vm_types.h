#ifndef TMXSIM_MACH_VM_TYPES_H
#define TMXSIM_MACH_VM_TYPES_H

#include <stdint.h>

typedef uint64_t mach_vm_address_t;
typedef uint64_t mach_vm_size_t;

#endif
