#include "quandor/profile_retrieval.h"

#include <IOKit/IOKitLib.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

#include "liblog_zol/ZOLProfile.h"
#include "quandor/access_failure.h"
#include "quandor/service.h"

namespace {

constexpr const layouts::harvest_request& events =
    layouts::request_row(layouts::request::profile_events);
constexpr const layouts::harvest_request& profiler =
    layouts::request_row(layouts::request::profiler_log);

constexpr const char* raw_label = "prof-event ";

// Whole records only; a trailing partial record is dropped.
void print_records(unsigned mode, std::span<const std::uint8_t> bytes) {
  for (std::size_t offset = 0; bytes.size() - offset >= profile_record_size;
       offset += profile_record_size) {
    const std::uint8_t* record = bytes.data() + offset;
    if (mode & 1u)
      print_profile_record(record);
    else
      tmx_profile_hexdump(raw_label, record);
  }
}

// The bytes delivered, never more than the buffer holds.
std::span<const std::uint8_t> delivered(std::span<const std::uint8_t> buffer,
                                        std::size_t length) {
  return buffer.first(std::min(length, buffer.size()));
}

}  // namespace

void read_profile_events(unsigned mode) {
  std::array<std::uint8_t, events.capacity> buffer{};
  for (unsigned pass = 0; pass < events.passes; ++pass) {
    std::size_t length = buffer.size();
    const kern_return_t result =
        call_command(std::string(events.service), events.command, buffer.data(), &length);
    if (result != KERN_SUCCESS) {
      varnel_bail(events.step_failure, nullptr, result);
      return;
    }
    // Unlike the profiler path, a reply shorter than a record asks again.
    if (length == 0) return;
    print_records(mode, delivered(buffer, length));
  }
}

void drain_profiler_log(unsigned mode, std::uint32_t selector) {
  profiler_conn connection(std::string(profiler.service));
  if (!connection.open(true)) return;

  std::array<std::uint8_t, profiler.capacity> buffer{};
  for (unsigned pass = 0; pass < profiler.passes; ++pass) {
    std::size_t size = buffer.size();
    const kern_return_t kr =
        IOConnectCallMethod(connection.connect, selector, nullptr, 0, nullptr,
                            0, nullptr, nullptr, buffer.data(), &size);
    if (kr != KERN_SUCCESS) {
      varnel_bail(layouts::profiler_failed, error_text(kr), kr);
      return;
    }
    if (size < profile_record_size) return;
    print_records(mode, delivered(buffer, size));
  }
}

void drain_zol_profile(unsigned mode) {
  drain_profiler_log(mode, profiler.command);
}

CFStringRef profile_record_to_string(const std::uint8_t* record) {
  const char* text = "";
  try {
    text = profile_line(record);
  } catch (...) {
    // A record that cannot be formatted still gets its (empty) line.
    text = "";
  }
  return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
}

void print_profile_record(const std::uint8_t* record) {
  CFStringRef line = profile_record_to_string(record);
  if (line == nullptr) return;
  if (const char* text = CFStringGetCStringPtr(line, kCFStringEncodingMacRoman)) {
    std::puts(text);
  } else {
    // No direct pointer for text outside ASCII: convert into a buffer.
    const CFIndex size = CFStringGetMaximumSizeForEncoding(
                             CFStringGetLength(line), kCFStringEncodingUTF8) +
                         1;
    std::vector<char> converted(static_cast<std::size_t>(std::max<CFIndex>(size, 1)));
    if (CFStringGetCString(line, converted.data(),
                           static_cast<CFIndex>(converted.size()),
                           kCFStringEncodingUTF8))
      std::puts(converted.data());
  }
  CFRelease(line);
}
