#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "quandor/service.h"
#include "quandor/startup_tables.h"

namespace {

constexpr const char* interface_class = "CorvelTMXInterface";

// A mutable copy of the class matching, so keys can be added to it.
CFMutableDictionaryRef interface_matching() {
  CFMutableDictionaryRef base = IOServiceMatching(interface_class);
  if (base == nullptr) return nullptr;
  CFMutableDictionaryRef copy =
      CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, base);
  CFRelease(base);
  return copy;
}

io_service_t matching_service(CFMutableDictionaryRef matching) {
  if (matching == nullptr) return 0;
  return IOServiceGetMatchingService(kIOMainPortDefault, matching);
}

bool all_digits(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
  });
}

}  // namespace

CFMutableDictionaryRef matching_by_service_id(std::uint32_t id) {
  CFMutableDictionaryRef matching = interface_matching();
  if (matching == nullptr) return nullptr;
  const int value = static_cast<int>(id);
  CFNumberRef number =
      CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &value);
  // Without the id the class alone would match any service of it.
  if (number == nullptr) {
    CFRelease(matching);
    return nullptr;
  }
  const void* keys[] = {CFSTR("service_id")};
  const void* values[] = {number};
  CFDictionaryRef property =
      CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                         &kCFTypeDictionaryKeyCallBacks,
                         &kCFTypeDictionaryValueCallBacks);
  if (property == nullptr) {
    CFRelease(number);
    CFRelease(matching);
    return nullptr;
  }
  CFDictionarySetValue(matching, CFSTR("IOPropertyMatch"), property);
  CFRelease(property);
  CFRelease(number);
  return matching;
}

CFMutableDictionaryRef matching_by_name(const char* text) {
  CFMutableDictionaryRef matching = interface_matching();
  if (matching == nullptr) return nullptr;
  CFStringRef name =
      CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
  // Without the name the class alone would match any service of it.
  if (name == nullptr) {
    CFRelease(matching);
    return nullptr;
  }
  CFDictionarySetValue(matching, CFSTR("IONameMatch"), name);
  CFRelease(name);
  return matching;
}

io_service_t find_service(const std::string& name) {
  int base = 0;
  if (name.compare(0, 2, hex_prefix) == 0)
    base = 16;
  else if (all_digits(name))
    base = 10;

  if (base == 0) {
    char prefixed[128];
    std::snprintf(prefixed, sizeof prefixed, "ZOL_%s", name.c_str());
    if (io_service_t service = matching_service(matching_by_name(prefixed)))
      return service;
    return matching_service(matching_by_name(name.c_str()));
  }
  // A designation without a number raises here, on purpose: nothing catches it.
  // The conversion would read "0x" with no hex digit after it as the number 0.
  if (base == 16 && !(name.size() > 2 &&
                      std::isxdigit(static_cast<unsigned char>(name[2])) != 0))
    throw std::invalid_argument("stoi");
  const int id = std::stoi(name, nullptr, base);
  return matching_service(matching_by_service_id(static_cast<std::uint32_t>(id)));
}
