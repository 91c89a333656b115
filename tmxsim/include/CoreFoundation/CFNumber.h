#ifndef TMXSIM_COREFOUNDATION_CFNUMBER_H
#define TMXSIM_COREFOUNDATION_CFNUMBER_H

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFBoolean *CFBooleanRef;

extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);

typedef const struct __CFNumber *CFNumberRef;

TMXSIM_ENUM(CFIndex, CFNumberType){
    kCFNumberSInt8Type = 1,    kCFNumberSInt16Type = 2,
    kCFNumberSInt32Type = 3,   kCFNumberSInt64Type = 4,
    kCFNumberFloat32Type = 5,  kCFNumberFloat64Type = 6,
    kCFNumberCharType = 7,     kCFNumberShortType = 8,
    kCFNumberIntType = 9,      kCFNumberLongType = 10,
    kCFNumberLongLongType = 11, kCFNumberFloatType = 12,
    kCFNumberDoubleType = 13,  kCFNumberCFIndexType = 14,
    kCFNumberNSIntegerType = 15, kCFNumberCGFloatType = 16,
    kCFNumberMaxType = 16};

CFTypeID CFNumberGetTypeID(void);
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType,
                           const void *valuePtr);
CFNumberType CFNumberGetType(CFNumberRef number);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType,
                         void *valuePtr);

#ifdef __cplusplus
}
#endif

#endif
