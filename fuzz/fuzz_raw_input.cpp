// Raw records through the reader, asked for and detected: every whole record
// in order at its offset, a tail named as damage at its byte, nothing else.

#include <cstdint>
#include <cstring>
#include <string_view>

#include "inspect/input/input_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  inspect::input_fault fault;
  auto input = inspect::open_input(inspect::memory_source(bytes), "fuzz",
                                   {inspect::input_form::raw, nullptr}, fault);
  if (!input) {
    if (size != 0) __builtin_trap();
    return 0;
  }
  inspect::damage_log damage("fuzz", nullptr);
  const auto records = inspect::read_records(std::move(*input), damage);
  inspect::input_record record;
  std::size_t count = 0;
  while (records->next(record)) {
    if (record.offset != 48 * count || record.line != 0 || record.calendar_text ||
        std::memcmp(record.bytes.data(), data + record.offset, 48) != 0) {
      __builtin_trap();
    }
    ++count;
  }
  const bool tail = size % 48 != 0;
  if (records->next(record) || count != size / 48 || damage.entries().size() != (tail ? 1u : 0u) ||
      (tail && damage.entries()[0].byte != 48 * count))
    __builtin_trap();
  // Detection on the same bytes: whatever it picks, it neither crashes nor
  // hands out a raw record past the end.
  auto detected = inspect::open_input(inspect::memory_source(bytes), "fuzz", {}, fault);
  if (!detected) return 0;
  const inspect::input_form form = detected->form;
  inspect::damage_log more("fuzz", nullptr);
  const auto again = inspect::read_records(std::move(*detected), more);
  while (again->next(record)) {
    if (form == inspect::input_form::raw && record.offset + 48 > size) __builtin_trap();
  }
  return 0;
}
