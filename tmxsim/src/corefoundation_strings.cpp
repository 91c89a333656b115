// CoreFoundation: strings, held as UTF-8.

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "cf_describe.h"
#include "call_log.h"
#include "platform.h"
#include "utf8.h"

using tmxsim::cf_kind;
using tmxsim::cf_value;
using tmxsim::log_line;
using tmxsim::platform;

namespace {

struct encoding_name {
  CFStringEncoding encoding;
  std::string_view name;
};

// The encodings the platform knows. MacRoman and ASCII carry ASCII text only.
constexpr encoding_name encodings[] = {
    {kCFStringEncodingMacRoman, "MacRoman"},
    {kCFStringEncodingASCII, "ASCII"},
    {kCFStringEncodingUTF8, "UTF-8"},
};

bool known_encoding(CFStringEncoding encoding) {
  return std::any_of(std::begin(encodings), std::end(encodings),
                     [encoding](const encoding_name& known) { return known.encoding == encoding; });
}

std::string encoding_text(CFStringEncoding encoding) {
  for (const encoding_name& known : encodings)
    if (known.encoding == encoding) return std::string(known.name);
  return "encoding=" + std::to_string(encoding);
}

// Whether `text` can be written in `encoding`.
bool encodable(std::string_view text, bool ascii, CFStringEncoding encoding) {
  if (encoding == kCFStringEncodingUTF8) return ascii || tmxsim::is_valid_utf8(text);
  return known_encoding(encoding) && ascii;
}

// Every line the tool prints is made into a string and read back: see
// quiet_platform().

[[gnu::always_inline]] inline CFStringRef create_string(platform& state, const char* cStr,
                                                  CFStringEncoding encoding) {
  if (cStr == nullptr) return nullptr;
  const std::string_view text(cStr);
  const bool ascii = tmxsim::is_ascii(text);
  if (!encodable(text, ascii, encoding)) return nullptr;
  cf_value& string = state.cf.create(cf_kind::string, true);
  string.text = text;
  string.ascii = ascii;
  return static_cast<CFStringRef>(state.cf.ref(string));
}

[[gnu::noinline]] CFStringRef create_string_and_log(const char* cStr, CFStringEncoding encoding) {
  platform& state = tmxsim::the_platform();
  const CFStringRef result = create_string(state, cStr, encoding);
  if (!state.log.on()) return result;
  log_line(state.log, "CFStringCreateWithCString")
      .quoted(cStr)
      .word(encoding_text(encoding))
      .returns()
      .word(tmxsim::cf_name(state.cf, result));
  return result;
}

[[gnu::always_inline]] inline const char* text_of(platform& state, CFStringRef theString,
                                                  CFStringEncoding encoding) {
  const cf_value* value = tmxsim::find_live(state, theString, cf_kind::string);
  if (value != nullptr && value->ascii && known_encoding(encoding)) return value->text.c_str();
  return nullptr;
}

[[gnu::noinline]] const char* text_and_log(CFStringRef theString, CFStringEncoding encoding) {
  platform& state = tmxsim::the_platform();
  const char* result = text_of(state, theString, encoding);
  if (!state.log.on()) return result;
  log_line(state.log, "CFStringGetCStringPtr")
      .word(tmxsim::cf_name(state.cf, theString))
      .word(encoding_text(encoding))
      .returns()
      .word(result != nullptr ? "text" : "NULL");
  return result;
}

}  // namespace

extern "C" {

CFTypeID CFStringGetTypeID(void) {
  return tmxsim::answer_type_id("CFStringGetTypeID", cf_kind::string);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* cStr,
                                      CFStringEncoding encoding) {
  if (platform* state = tmxsim::quiet_platform()) return create_string(*state, cStr, encoding);
  return create_string_and_log(cStr, encoding);
}

const char* CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding) {
  if (platform* state = tmxsim::quiet_platform()) return text_of(*state, theString, encoding);
  return text_and_log(theString, encoding);
}

Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
  platform& state = tmxsim::the_platform();
  const cf_value* value = tmxsim::find_live(state, theString, cf_kind::string);
  bool copied = false;
  if (value != nullptr && buffer != nullptr && bufferSize > 0 &&
      value->text.size() < static_cast<std::size_t>(bufferSize) &&
      encodable(value->text, value->ascii, encoding)) {
    std::memcpy(buffer, value->text.c_str(), value->text.size() + 1);
    copied = true;
  }
  if (state.log.on())
    log_line(state.log, "CFStringGetCString")
        .word(tmxsim::cf_name(state.cf, theString))
        .number(bufferSize)
        .word(encoding_text(encoding))
        .returns()
        .word(copied ? "true" : "false");
  return copied;
}

CFIndex CFStringGetLength(CFStringRef theString) {
  platform& state = tmxsim::the_platform();
  const cf_value* value = tmxsim::find_live(state, theString, cf_kind::string);
  const auto length =
      value != nullptr ? static_cast<CFIndex>(tmxsim::utf16_length(value->text)) : 0;
  if (state.log.on())
    log_line(state.log, "CFStringGetLength")
        .word(tmxsim::cf_name(state.cf, theString))
        .returns()
        .number(length);
  return length;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  platform& state = tmxsim::the_platform();
  // Three UTF-8 bytes at most for each UTF-16 unit; -1 when it cannot be said.
  const CFIndex per_unit = encoding == kCFStringEncodingUTF8 ? 3 : 1;
  CFIndex size = -1;
  if (known_encoding(encoding) && length >= 0 &&
      length <= std::numeric_limits<CFIndex>::max() / per_unit)
    size = length * per_unit;
  if (state.log.on())
    log_line(state.log, "CFStringGetMaximumSizeForEncoding")
        .number(length)
        .word(encoding_text(encoding))
        .returns()
        .number(size);
  return size;
}

// CFSTR: a compile-time constant on the real platform, so not a logged call.
// A constant string is never a boolean: it is its own reference.
CFStringRef __CFStringMakeConstantString(const char* cStr) {
  if (cStr == nullptr) return nullptr;
  platform& state = tmxsim::the_platform();
  return reinterpret_cast<CFStringRef>(&state.cf.constant_string(cStr));
}

}  // extern "C"
