#ifndef TMXSIM_COREFOUNDATION_CFBASE_H
#define TMXSIM_COREFOUNDATION_CFBASE_H

#include <stddef.h>
#include <stdint.h>

/* An enumeration of a fixed integer type, as the phone declares its option
   and kind constants: in C++ a bare integer does not convert to it. */
#ifdef __cplusplus
#define TMXSIM_ENUM(type, name) enum name : type
#else
#define TMXSIM_ENUM(type, name) \
  typedef type name;            \
  enum
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef signed char SInt8;
typedef unsigned short UInt16;
typedef signed short SInt16;
typedef unsigned int UInt32;
typedef signed int SInt32;
typedef uint64_t UInt64;
typedef int64_t SInt64;

typedef long CFIndex;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;
typedef unsigned long CFTypeID;

typedef const void *CFTypeRef;
typedef const struct __CFAllocator *CFAllocatorRef;
typedef const struct __CFString *CFStringRef;
typedef struct __CFString *CFMutableStringRef;

extern const CFAllocatorRef kCFAllocatorDefault;

CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);
CFIndex CFGetRetainCount(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);
Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);

#ifdef __cplusplus
}
#endif

#endif
