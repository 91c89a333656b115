// A harvest capture through the reader: every record comes from a profile
// line, in order, with a calendar text taken from its lines, and each damage
// names a line of the input.

#include <cstdint>
#include <string_view>

#include "fuzz/fuzz_lines.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  check_line_reader({reinterpret_cast<const char*>(data), size}, inspect::input_form::harvest,
                    "{  'category':",
                    [](std::string_view line, const inspect::input_record& record) {
                      // A record whose text runs over lines has its calendar time on the last.
                      return record.offset == 0 &&
                             (!record.calendar_text ||
                              (record.calendar_text->find('\'') == std::string_view::npos &&
                               (record.last_line > record.line ||
                                line.find(*record.calendar_text) != std::string_view::npos)));
                    });
  return 0;
}
