#ifndef TMXSIM_IOKIT_HID_IOHIDLIB_H
#define TMXSIM_IOKIT_HID_IOHIDLIB_H

#include <IOKit/hid/IOHIDDevice.h>

#endif
