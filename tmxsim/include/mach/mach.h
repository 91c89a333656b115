#ifndef TMXSIM_MACH_MACH_H
#define TMXSIM_MACH_MACH_H

#include <mach/mach_init.h>
#include <mach/mach_types.h>
#include <mach/message.h>

#endif
