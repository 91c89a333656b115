#ifndef TMXSIM_MACH_MACH_ERROR_H
#define TMXSIM_MACH_MACH_ERROR_H

#include <mach/error.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The platform's text for a kernel result: static storage, never to be
   modified; a null pointer for a value of a system without texts. */
char *mach_error_string(mach_error_t error_value);

#ifdef __cplusplus
}
#endif

#endif
