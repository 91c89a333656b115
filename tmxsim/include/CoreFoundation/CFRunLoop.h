#ifndef TMXSIM_COREFOUNDATION_CFRUNLOOP_H
#define TMXSIM_COREFOUNDATION_CFRUNLOOP_H

/* No run loop is simulated: the tool has none. The header stands for what
   the phone's brings in with it, so that IOKitLib.h brings in as much. */

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFString.h>
#include <mach/port.h>

typedef struct __CFRunLoop *CFRunLoopRef;

#endif
