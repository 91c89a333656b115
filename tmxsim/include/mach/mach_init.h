#ifndef TMXSIM_MACH_MACH_INIT_H
#define TMXSIM_MACH_MACH_INIT_H

#include <mach/mach_types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The calling task's port. */
mach_port_t mach_task_self(void);

#ifdef __cplusplus
}
#endif

#endif
