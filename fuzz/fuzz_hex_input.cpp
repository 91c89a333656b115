// "prof-event " lines through the reader: every record is its line's digits,
// in order, and a fault names a prof-event line after the last record.

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "fuzz/fuzz_lines.h"
#include "inspect/input/record_input.h"

namespace {

bool is_hex_line(const std::vector<std::string_view>& lines, std::uint64_t number) {
  return line_starts_with(lines, number, "prof-event ");
}

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
  static std::FILE* const discard = std::fopen("/dev/null", "w");
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto lines = lines_of(text);
  const auto records = inspect::open_records(inspect::memory_source(text), "fuzz",
                                             {inspect::input_form::hex, false, discard});
  inspect::input_record record;
  std::uint64_t last = 0;
  while (records->next(record)) {
    if (record.line <= last || !is_hex_line(lines, record.line) || record.calendar_text ||
        !digits_match(lines[record.line - 1], record)) {
      __builtin_trap();
    }
    last = record.line;
  }
  check_reader_end(*records, record, inspect::input_form::hex, last,
                   [&](std::uint64_t number) { return is_hex_line(lines, number); });
  return 0;
}
