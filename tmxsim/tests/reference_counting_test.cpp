// CoreFoundation ownership: what the audit counts, and misuse that must not crash.

#include "sim_test_support.h"

namespace {

constexpr std::string_view phone = R"({
  "services": [{"name": "Sync", "class": "CorvelTMXTimesync",
                "properties": {"timesync": {"tmx": 5, "calendar": 6}}}]
})";

CFMutableArrayRef new_array() {
  return CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
}

TEST(reference_counting, containers_keep_what_they_hold) {
  use_phone("{}");
  CFMutableArrayRef array = new_array();
  CFNumberRef number = make_int(42);
  CFArrayAppendValue(array, number);
  CFRelease(number);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=1 misuse=0");

  int value = 0;
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), number);
  EXPECT_TRUE(CFNumberGetValue(number, kCFNumberIntType, &value));
  EXPECT_EQ(value, 42);
  EXPECT_EQ(CFGetRetainCount(number), 1);

  CFRelease(array);
  EXPECT_EQ(audit_text(), all_clear);
  // The array took the number with it; this release is refused.
  CFRelease(number);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=1");
}

TEST(reference_counting, releases_past_ownership_are_counted_not_followed) {
  use_phone("{}");
  CFStringRef text = make_string("owned once, retained once");
  CFRetain(text);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=2 misuse=0");
  CFRelease(text);
  CFRelease(text);
  EXPECT_EQ(audit_text(), all_clear);
  CFRelease(text);
  int not_an_object = 0;
  CFRelease(&not_an_object);
  CFRelease(nullptr);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=3");
}

TEST(reference_counting, registry_properties_are_owned_until_released) {
  use_phone(phone);
  const io_service_t service = lookup(IOServiceMatching("CorvelTMXTimesync"));
  CFTypeRef first = IORegistryEntryCreateCFProperty(service, CFSTR("timesync"), nullptr, 0);
  CFTypeRef second = IORegistryEntryCreateCFProperty(service, CFSTR("timesync"), nullptr, 0);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(IORegistryEntryCreateCFProperty(service, CFSTR("missing"), nullptr, 0), nullptr);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=0 cf_objects=2 misuse=0");

  long long tmx = 0;
  const void* number = CFDictionaryGetValue(static_cast<CFDictionaryRef>(first), CFSTR("tmx"));
  EXPECT_TRUE(CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberLongLongType, &tmx));
  EXPECT_EQ(tmx, 5);
  // Properties are immutable.
  CFDictionarySetValue(
      reinterpret_cast<CFMutableDictionaryRef>(const_cast<void*>(first)), CFSTR("tmx"), number);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=0 cf_objects=2 misuse=1");

  CFRelease(first);
  CFRelease(second);
  IOObjectRelease(service);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=1");
}

TEST(reference_counting, constants_are_never_counted) {
  use_phone("{}");
  EXPECT_EQ(CFSTR("same"), CFSTR("same"));
  CFRetain(CFSTR("same"));
  CFRelease(CFSTR("same"));
  CFRelease(CFSTR("same"));
  CFRelease(kCFBooleanTrue);
  EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
  EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(reference_counting, matching_consumes_the_dictionary) {
  use_phone(phone);
  CFMutableDictionaryRef matching = IOServiceMatching("CorvelTMXTimesync");
  CFRetain(matching);
  const io_service_t service = lookup(matching);
  EXPECT_NE(service, 0u);
  EXPECT_EQ(audit_text(), "io_objects=1 connections=0 cf_objects=1 misuse=0");
  CFRelease(matching);
  IOObjectRelease(service);
  EXPECT_EQ(audit_text(), all_clear);

  // A dictionary the caller does not own cannot be consumed.
  CFMutableArrayRef array = new_array();
  matching = IOServiceMatching("CorvelTMXTimesync");
  CFArrayAppendValue(array, matching);
  CFRelease(matching);
  EXPECT_EQ(lookup(static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(array, 0))), 0u);
  CFRelease(array);
  EXPECT_EQ(audit_text(), "io_objects=0 connections=0 cf_objects=0 misuse=1");
}

}  // namespace
