#ifndef TMXSIM_MACH_PORT_H
#define TMXSIM_MACH_PORT_H

typedef unsigned int natural_t;
typedef natural_t mach_port_t;

#define MACH_PORT_NULL ((mach_port_t)0)

#endif
