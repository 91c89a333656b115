#include <CoreFoundation/CoreFoundation.h>

#include <cstdarg>

#include "quandor/service.h"

namespace {

void release_if(CFTypeRef object) {
  if (object != nullptr) CFRelease(object);
}

CFDictionaryRef make_dictionary(const void** keys, const void** values,
                                CFIndex count) {
  return CFDictionaryCreate(kCFAllocatorDefault, keys, values, count,
                            &kCFTypeDictionaryKeyCallBacks,
                            &kCFTypeDictionaryValueCallBacks);
}

}  // namespace

CFNumberRef make_number(std::int32_t value) {
  return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &value);
}

CFMutableArrayRef make_array(CFTypeRef first, ...) {
  CFMutableArrayRef array =
      CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  std::va_list rest;
  va_start(rest, first);
  for (CFTypeRef object = first; object != nullptr;
       object = va_arg(rest, CFTypeRef)) {
    if (array != nullptr) CFArrayAppendValue(array, object);
    CFRelease(object);
  }
  va_end(rest);
  return array;
}

CFDictionaryRef make_usage_pair(CFNumberRef page, CFNumberRef usage) {
  CFDictionaryRef pair = nullptr;
  if (page != nullptr && usage != nullptr) {
    const void* keys[] = {CFSTR("DeviceUsagePage"), CFSTR("DeviceUsage")};
    const void* values[] = {page, usage};
    pair = make_dictionary(keys, values, 2);
  }
  release_if(page);
  release_if(usage);
  return pair;
}

CFDictionaryRef make_usage_pairs(CFArrayRef pairs) {
  if (pairs == nullptr) return nullptr;
  const void* keys[] = {CFSTR("DeviceUsagePairs")};
  const void* values[] = {pairs};
  CFDictionaryRef dictionary = make_dictionary(keys, values, 1);
  CFRelease(pairs);
  return dictionary;
}
