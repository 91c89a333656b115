#ifndef TMXSIM_MACH_MESSAGE_H
#define TMXSIM_MACH_MESSAGE_H

#include <mach/kern_return.h>
#include <mach/port.h>

#define MACH_SEND_INVALID_DEST 0x10000003

#endif
