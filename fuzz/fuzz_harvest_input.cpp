// A harvest capture through the reader: every record comes from a profile
// line, in order, and a fault names a profile line after the last record.

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "fuzz/fuzz_lines.h"
#include "inspect/input/record_input.h"

namespace {

bool is_profile_line(const std::vector<std::string_view>& lines, std::uint64_t number) {
  return line_starts_with(lines, number, "{  'category':");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static std::FILE* const discard = std::fopen("/dev/null", "w");
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto lines = lines_of(text);
  const auto records = inspect::open_records(inspect::memory_source(text), "fuzz",
                                             {inspect::input_form::harvest, false, discard});
  inspect::input_record record;
  std::uint64_t last = 0;
  while (records->next(record)) {
    if (record.line <= last || !is_profile_line(lines, record.line) || record.offset != 0) {
      __builtin_trap();
    }
    const std::string_view line = lines[record.line - 1];
    if (record.calendar_text && (record.calendar_text->find('\'') != std::string_view::npos ||
                                 line.find(*record.calendar_text) == std::string_view::npos)) {
      __builtin_trap();
    }
    last = record.line;
  }
  check_reader_end(*records, record, inspect::input_form::harvest, last,
                   [&](std::uint64_t number) { return is_profile_line(lines, number); });
  return 0;
}
