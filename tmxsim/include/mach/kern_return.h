#ifndef TMXSIM_MACH_KERN_RETURN_H
#define TMXSIM_MACH_KERN_RETURN_H

typedef int kern_return_t;

#define KERN_SUCCESS 0

#endif
