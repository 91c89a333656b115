#ifndef TMXSIM_MACH_MACH_ERROR_H
#define TMXSIM_MACH_MACH_ERROR_H

#include <mach/mach.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The platform's text for a kernel result; "unknown error code" otherwise. */
const char *mach_error_string(mach_error_t error_value);

#ifdef __cplusplus
}
#endif

#endif
