// CoreFoundation: strings, numbers and equality; what the audit counts of
// ownership, and misuse that must not crash.

#include <limits>
#include <utility>

#include "sim_test_support.h"

namespace {

// Whether reading `number` as `kind` was exact, and the value it gave.
template <typename type>
std::pair<bool, type> read_as(CFNumberRef number, CFNumberType kind) {
  type value{};
  const bool exact = CFNumberGetValue(number, kind, &value);
  return {exact, value};
}

template <typename type>
CFNumberRef number_of(CFNumberType kind, type value) {
  return CFNumberCreate(nullptr, kind, &value);
}

// Only well-formed UTF-8 makes a string, which reads back; number conversions report loss.
TEST(values, strings_and_numbers_read_back) {
  use_phone("{}");
  const char* const malformed[] = {
      "\xc0\xaf",          // overlong '/'
      "\xe0\x80\xaf",      // overlong, three bytes
      "\xed\xa0\x80",      // a surrogate
      "\xf4\x90\x80\x80",  // past U+10FFFF
      "ok\xe2\x82",        // cut short
      "\x80",              // a lone continuation byte
  };
  for (const char* text : malformed)
    EXPECT_EQ(CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8), nullptr)
        << "bytes: " << text;

  // U+00E9, U+20AC and U+1F600: two, three and four bytes; the last two UTF-16 units.
  const char* const text = "caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80";
  CFStringRef string = make_string(text);
  EXPECT_EQ(CFStringGetLength(string), 9);
  EXPECT_EQ(CFStringGetCStringPtr(string, kCFStringEncodingUTF8), nullptr);

  char fits[15];  // 14 bytes and the NUL
  EXPECT_TRUE(CFStringGetCString(string, fits, sizeof fits, kCFStringEncodingUTF8));
  EXPECT_STREQ(fits, text);
  EXPECT_FALSE(CFStringGetCString(string, fits, sizeof fits - 1, kCFStringEncodingUTF8));
  EXPECT_FALSE(CFStringGetCString(string, fits, sizeof fits, kCFStringEncodingASCII));
  CFRelease(string);

  CFStringRef ascii = make_string("plain");
  EXPECT_STREQ(CFStringGetCStringPtr(ascii, kCFStringEncodingMacRoman), "plain");
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(CFStringGetLength(ascii), kCFStringEncodingUTF8), 15);
  CFRelease(ascii);

  CFNumberRef wide = number_of(kCFNumberLongLongType, 5000000000LL);
  EXPECT_EQ(CFNumberGetType(wide), kCFNumberSInt64Type);
  EXPECT_EQ(read_as<long long>(wide, kCFNumberSInt64Type), std::pair(true, 5000000000LL));
  EXPECT_FALSE(read_as<int>(wide, kCFNumberSInt32Type).first);
  EXPECT_EQ(read_as<double>(wide, kCFNumberFloat64Type), std::pair(true, 5e9));

  CFNumberRef fraction = number_of(kCFNumberDoubleType, 2.5);
  EXPECT_EQ(read_as<int>(fraction, kCFNumberIntType), std::pair(false, 2));
  CFNumberRef largest = number_of(kCFNumberSInt64Type, std::numeric_limits<long long>::max());
  EXPECT_FALSE(read_as<double>(largest, kCFNumberFloat64Type).first);

  CFNumberRef tiny = number_of(kCFNumberSInt8Type, std::int8_t{-3});
  EXPECT_EQ(read_as<long long>(tiny, kCFNumberLongLongType), std::pair(true, -3LL));
  EXPECT_FALSE(CFEqual(tiny, wide));
  CFNumberRef same = number_of(kCFNumberDoubleType, -3.0);
  EXPECT_TRUE(CFEqual(tiny, same));

  for (CFNumberRef number : {wide, fraction, largest, tiny, same}) CFRelease(number);
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(reference_counting, containers_keep_what_they_hold_and_misuse_is_counted) {
  use_phone("{}");
  CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  CFNumberRef number = make_int(42);
  CFArrayAppendValue(array, number);
  CFRelease(number);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=1 misuse=0");
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), number);
  EXPECT_EQ(read_as<int>(number, kCFNumberIntType), std::pair(true, 42));
  EXPECT_EQ(CFGetRetainCount(number), 1);

  CFRelease(array);
  EXPECT_EQ(audit_text(), all_clear);
  // The array took the number with it; this release is refused.
  CFRelease(number);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=1");

  // Constants are never counted; releases past ownership are counted, not followed.
  EXPECT_EQ(CFSTR("same"), CFSTR("same"));
  CFRetain(CFSTR("same"));
  CFRelease(CFSTR("same"));
  CFRelease(CFSTR("same"));
  CFRelease(kCFBooleanTrue);
  EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
  EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
  CFStringRef text = make_string("owned once, retained once");
  CFRetain(text);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=2 misuse=1");
  CFRelease(text);
  CFRelease(text);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=1");
  CFRelease(text);
  int not_an_object = 0;
  CFRelease(&not_an_object);
  CFRelease(nullptr);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=4");
}

// Properties are owned until released, and immutable; matching consumes the
// dictionary, which the caller must own.
TEST(reference_counting, registry_properties_and_matching_dictionaries) {
  use_phone(test_phone);
  CFMutableDictionaryRef matching = IOServiceMatching("CorvelTMXTimesync");
  CFRetain(matching);
  const io_service_t service = lookup(matching);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=0 cf_objects=1 misuse=0");
  CFRelease(matching);
  CFTypeRef first = IORegistryEntryCreateCFProperty(service, CFSTR("timesync"), nullptr, 0);
  CFTypeRef second = IORegistryEntryCreateCFProperty(service, CFSTR("timesync"), nullptr, 0);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(IORegistryEntryCreateCFProperty(service, CFSTR("missing"), nullptr, 0), nullptr);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=0 cf_objects=2 misuse=0");

  const void* number = CFDictionaryGetValue(static_cast<CFDictionaryRef>(first), CFSTR("tmx"));
  EXPECT_EQ(read_as<long long>(static_cast<CFNumberRef>(number), kCFNumberLongLongType),
            std::pair(true, 5LL));
  CFDictionarySetValue(
      reinterpret_cast<CFMutableDictionaryRef>(const_cast<void*>(first)), CFSTR("tmx"), number);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=0 cf_objects=2 misuse=1");
  for (CFTypeRef property : {first, second}) CFRelease(property);
  IOObjectRelease(service);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=1");

  CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  matching = IOServiceMatching("CorvelTMXTimesync");
  CFArrayAppendValue(array, matching);
  CFRelease(matching);
  EXPECT_EQ(lookup(static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(array, 0))), 0u);
  CFRelease(array);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=2");
}

}  // namespace
