#ifndef TMXSIM_COREFOUNDATION_CFSTRING_H
#define TMXSIM_COREFOUNDATION_CFSTRING_H

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef UInt32 CFStringEncoding;

TMXSIM_ENUM(CFStringEncoding, CFStringBuiltInEncodings){
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingWindowsLatin1 = 0x0500,
    kCFStringEncodingISOLatin1 = 0x0201,
    kCFStringEncodingNextStepLatin1 = 0x0B01,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUnicode = 0x0100,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingNonLossyASCII = 0x0BFF,
    kCFStringEncodingUTF16 = 0x0100,
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingUTF32 = 0x0c000100,
    kCFStringEncodingUTF32BE = 0x18000100,
    kCFStringEncodingUTF32LE = 0x1c000100};

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

#ifdef __cplusplus
}
#endif

#endif
