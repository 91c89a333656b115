// "prof-event " lines through the reader: every record is its line's digits,
// in order, and each damage names a line of the input.

#include <charconv>
#include <cstdint>
#include <string_view>

#include "fuzz/fuzz_lines.h"

namespace {

// The line's digits, read one at a time here, against the record.
bool digits_match(std::string_view line, const inspect::input_record& record) {
  if (line.size() != 107 && !(line.size() == 108 && line.back() == '\r')) return false;
  for (std::size_t i = 0; i < 96; ++i) {
    unsigned value = 0;
    const char* digit = line.data() + 11 + i;
    if (std::from_chars(digit, digit + 1, value, 16).ptr != digit + 1) return false;
    if (value != ((record.bytes[i / 2] >> (i % 2 == 0 ? 4 : 0)) & 0x0f)) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  check_line_reader({reinterpret_cast<const char*>(data), size}, inspect::input_form::hex,
                    "prof-event ",
                    [](std::string_view line, const inspect::input_record& record) {
                      return !record.calendar_text && digits_match(line, record);
                    });
  return 0;
}
