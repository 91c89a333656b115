// Raw records through the reader, asked for and detected: every whole record
// in order at its offset, nothing of the tail, never a fault.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "inspect/input/record_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static std::FILE* const discard = std::fopen("/dev/null", "w");
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto records = inspect::open_records(inspect::memory_source(bytes), "fuzz",
                                             {inspect::input_form::raw, false, discard});
  inspect::input_record record;
  std::size_t count = 0;
  while (records->next(record)) {
    if (record.offset != 48 * count || record.line != 0 || record.calendar_text ||
        std::memcmp(record.bytes.data(), data + record.offset, 48) != 0) {
      __builtin_trap();
    }
    ++count;
  }
  if (records->next(record) || records->fault() || count != size / 48) __builtin_trap();
  // Detection on the same bytes: whatever it picks, it neither crashes nor
  // hands out a raw record past the end.
  const auto detected = inspect::open_records(inspect::memory_source(bytes), "fuzz",
                                              {std::nullopt, false, discard});
  while (detected->next(record)) {
    if (detected->form() == inspect::input_form::raw && record.offset + 48 > size) __builtin_trap();
  }
  return 0;
}
