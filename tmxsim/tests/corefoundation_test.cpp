// CoreFoundation values: strings, numbers and equality.

#include <cstring>
#include <limits>

#include "sim_test_support.h"

namespace {

TEST(strings, malformed_utf8_makes_no_string) {
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
  EXPECT_EQ(audit_text(), all_clear);
}

TEST(strings, well_formed_text_reads_back) {
  use_phone("{}");
  // U+00E9, U+20AC and U+1F600: two, three and four bytes; the last two UTF-16 units.
  const char* const text = "caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80";
  CFStringRef string = make_string(text);
  ASSERT_NE(string, nullptr);
  EXPECT_EQ(CFStringGetLength(string), 9);
  EXPECT_EQ(CFStringGetCStringPtr(string, kCFStringEncodingUTF8), nullptr);

  char fits[15];  // 14 bytes and the NUL
  EXPECT_TRUE(CFStringGetCString(string, fits, sizeof fits, kCFStringEncodingUTF8));
  EXPECT_STREQ(fits, text);
  char too_small[14];
  EXPECT_FALSE(CFStringGetCString(string, too_small, sizeof too_small, kCFStringEncodingUTF8));
  EXPECT_FALSE(CFStringGetCString(string, fits, sizeof fits, kCFStringEncodingASCII));
  CFRelease(string);

  CFStringRef ascii = make_string("plain");
  EXPECT_STREQ(CFStringGetCStringPtr(ascii, kCFStringEncodingMacRoman), "plain");
  EXPECT_EQ(CFStringGetMaximumSizeForEncoding(CFStringGetLength(ascii), kCFStringEncodingUTF8), 15);
  CFRelease(ascii);
  EXPECT_EQ(audit_text(), all_clear);
}

template <typename type>
bool read_as(CFNumberRef number, CFNumberType kind, type& out) {
  return CFNumberGetValue(number, kind, &out);
}

TEST(numbers, conversions_report_loss) {
  use_phone("{}");
  const long long big = 5000000000;
  CFNumberRef wide = CFNumberCreate(nullptr, kCFNumberLongLongType, &big);
  EXPECT_EQ(CFNumberGetType(wide), kCFNumberSInt64Type);
  long long back = 0;
  int narrow = 0;
  double real = 0;
  EXPECT_TRUE(read_as(wide, kCFNumberSInt64Type, back));
  EXPECT_EQ(back, big);
  EXPECT_FALSE(read_as(wide, kCFNumberSInt32Type, narrow));
  EXPECT_TRUE(read_as(wide, kCFNumberFloat64Type, real));
  EXPECT_EQ(real, 5e9);

  const double half = 2.5;
  CFNumberRef fraction = CFNumberCreate(nullptr, kCFNumberDoubleType, &half);
  EXPECT_FALSE(read_as(fraction, kCFNumberIntType, narrow));
  EXPECT_EQ(narrow, 2);
  const long long huge = std::numeric_limits<long long>::max();
  CFNumberRef largest = CFNumberCreate(nullptr, kCFNumberSInt64Type, &huge);
  EXPECT_FALSE(read_as(largest, kCFNumberFloat64Type, real));

  const std::int8_t small = -3;
  CFNumberRef tiny = CFNumberCreate(nullptr, kCFNumberSInt8Type, &small);
  EXPECT_TRUE(read_as(tiny, kCFNumberLongLongType, back));
  EXPECT_EQ(back, -3);
  EXPECT_FALSE(CFEqual(tiny, wide));
  const double minus_three = -3.0;
  CFNumberRef same = CFNumberCreate(nullptr, kCFNumberDoubleType, &minus_three);
  EXPECT_TRUE(CFEqual(tiny, same));

  for (CFNumberRef number : {wide, fraction, largest, tiny, same}) CFRelease(number);
  EXPECT_EQ(audit_text(), all_clear);
}

}  // namespace
