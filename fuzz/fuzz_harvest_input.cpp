// A harvest capture through the reader: every record comes from a profile
// line, in order, and a fault names a profile line after the last record.

#include <charconv>
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
  if (records->next(record) || records->form() != inspect::input_form::harvest) __builtin_trap();
  if (const auto& fault = records->fault()) {
    std::uint64_t number = 0;
    const std::string_view where = fault->where;
    if (!where.starts_with("line ") || fault->fault.empty()) __builtin_trap();
    std::from_chars(where.data() + 5, where.data() + where.size(), number);
    if (number <= last || !is_profile_line(lines, number)) __builtin_trap();
  }
  return 0;
}
