#ifndef TMXSIM_COREFOUNDATION_CFARRAY_H
#define TMXSIM_COREFOUNDATION_CFARRAY_H

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFArray *CFArrayRef;
typedef struct __CFArray *CFMutableArrayRef;

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

#ifdef __cplusplus
}
#endif

#endif
