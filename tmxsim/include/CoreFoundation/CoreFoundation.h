#ifndef TMXSIM_COREFOUNDATION_H
#define TMXSIM_COREFOUNDATION_H

#include <stddef.h>
#include <stdint.h>

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
typedef UInt32 CFStringEncoding;

typedef const void *CFTypeRef;
typedef const struct __CFAllocator *CFAllocatorRef;
typedef const struct __CFString *CFStringRef;
typedef struct __CFString *CFMutableStringRef;
typedef const struct __CFDictionary *CFDictionaryRef;
typedef struct __CFDictionary *CFMutableDictionaryRef;
typedef const struct __CFArray *CFArrayRef;
typedef struct __CFArray *CFMutableArrayRef;
typedef const struct __CFNumber *CFNumberRef;
typedef const struct __CFBoolean *CFBooleanRef;

/* ---- Base ---------------------------------------------------------------- */

extern const CFAllocatorRef kCFAllocatorDefault;

CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);
CFIndex CFGetRetainCount(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);
Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);

/* ---- Booleans ------------------------------------------------------------ */

extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);

/* ---- Numbers ------------------------------------------------------------- */

typedef CFIndex CFNumberType;
enum {
  kCFNumberSInt8Type = 1,
  kCFNumberSInt16Type = 2,
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberFloat32Type = 5,
  kCFNumberFloat64Type = 6,
  kCFNumberCharType = 7,
  kCFNumberShortType = 8,
  kCFNumberIntType = 9,
  kCFNumberLongType = 10,
  kCFNumberLongLongType = 11,
  kCFNumberFloatType = 12,
  kCFNumberDoubleType = 13,
  kCFNumberCFIndexType = 14,
  kCFNumberNSIntegerType = 15,
  kCFNumberCGFloatType = 16,
  kCFNumberMaxType = 16
};

CFTypeID CFNumberGetTypeID(void);
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType,
                           const void *valuePtr);
CFNumberType CFNumberGetType(CFNumberRef number);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType,
                         void *valuePtr);

/* ---- Strings ------------------------------------------------------------- */

enum {
  kCFStringEncodingMacRoman = 0,
  kCFStringEncodingASCII = 0x0600,
  kCFStringEncodingUTF8 = 0x08000100
};

CFTypeID CFStringGetTypeID(void);
CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char *cStr,
                                      CFStringEncoding encoding);
const char *CFStringGetCStringPtr(CFStringRef theString,
                                  CFStringEncoding encoding);
Boolean CFStringGetCString(CFStringRef theString, char *buffer,
                           CFIndex bufferSize, CFStringEncoding encoding);
CFIndex CFStringGetLength(CFStringRef theString);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length,
                                          CFStringEncoding encoding);

/* Compile-time constant strings: never released, never counted. */
CFStringRef __CFStringMakeConstantString(const char *cStr);
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "")

/* ---- Arrays -------------------------------------------------------------- */

typedef const void *(*CFArrayRetainCallBack)(CFAllocatorRef allocator,
                                             const void *value);
typedef void (*CFArrayReleaseCallBack)(CFAllocatorRef allocator,
                                       const void *value);
typedef CFStringRef (*CFArrayCopyDescriptionCallBack)(const void *value);
typedef Boolean (*CFArrayEqualCallBack)(const void *value1, const void *value2);
typedef struct {
  CFIndex version;
  CFArrayRetainCallBack retain;
  CFArrayReleaseCallBack release;
  CFArrayCopyDescriptionCallBack copyDescription;
  CFArrayEqualCallBack equal;
} CFArrayCallBacks;

extern const CFArrayCallBacks kCFTypeArrayCallBacks;

CFTypeID CFArrayGetTypeID(void);
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void **values,
                         CFIndex numValues, const CFArrayCallBacks *callBacks);
CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator,
                                       CFIndex capacity,
                                       const CFArrayCallBacks *callBacks);
void CFArrayAppendValue(CFMutableArrayRef theArray, const void *value);
CFIndex CFArrayGetCount(CFArrayRef theArray);
const void *CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx);

/* ---- Dictionaries -------------------------------------------------------- */

typedef const void *(*CFDictionaryRetainCallBack)(CFAllocatorRef allocator,
                                                  const void *value);
typedef void (*CFDictionaryReleaseCallBack)(CFAllocatorRef allocator,
                                            const void *value);
typedef CFStringRef (*CFDictionaryCopyDescriptionCallBack)(const void *value);
typedef Boolean (*CFDictionaryEqualCallBack)(const void *value1,
                                             const void *value2);
typedef CFHashCode (*CFDictionaryHashCallBack)(const void *value);
typedef struct {
  CFIndex version;
  CFDictionaryRetainCallBack retain;
  CFDictionaryReleaseCallBack release;
  CFDictionaryCopyDescriptionCallBack copyDescription;
  CFDictionaryEqualCallBack equal;
  CFDictionaryHashCallBack hash;
} CFDictionaryKeyCallBacks;
typedef struct {
  CFIndex version;
  CFDictionaryRetainCallBack retain;
  CFDictionaryReleaseCallBack release;
  CFDictionaryCopyDescriptionCallBack copyDescription;
  CFDictionaryEqualCallBack equal;
} CFDictionaryValueCallBacks;

extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CFTypeID CFDictionaryGetTypeID(void);
CFDictionaryRef CFDictionaryCreate(
    CFAllocatorRef allocator, const void **keys, const void **values,
    CFIndex numValues, const CFDictionaryKeyCallBacks *keyCallBacks,
    const CFDictionaryValueCallBacks *valueCallBacks);
CFMutableDictionaryRef CFDictionaryCreateMutable(
    CFAllocatorRef allocator, CFIndex capacity,
    const CFDictionaryKeyCallBacks *keyCallBacks,
    const CFDictionaryValueCallBacks *valueCallBacks);
CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef allocator,
                                                     CFIndex capacity,
                                                     CFDictionaryRef theDict);
CFIndex CFDictionaryGetCount(CFDictionaryRef theDict);
const void *CFDictionaryGetValue(CFDictionaryRef theDict, const void *key);
void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void *key,
                          const void *value);
void CFDictionaryAddValue(CFMutableDictionaryRef theDict, const void *key,
                          const void *value);

#ifdef __cplusplus
}
#endif

#endif
