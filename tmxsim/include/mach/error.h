#ifndef TMXSIM_MACH_ERROR_H
#define TMXSIM_MACH_ERROR_H

#include <mach/kern_return.h>

typedef kern_return_t mach_error_t;

#endif
