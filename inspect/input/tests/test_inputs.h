#pragma once

// Inputs made from records whose bytes follow from a seed, and a reader
// drained into one line a test compares.

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "inspect/input/record_input.h"

namespace inspect_test {

using record_bytes = std::array<std::uint8_t, 48>;

inline record_bytes sample(int seed) {
  record_bytes bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(seed * 37 + i * 11);
  }
  return bytes;
}

inline std::string profile_line(int seed, const std::string& tail = "}") {
  std::string line = "{  'category': 'sensors', 'event':      'data', 'binary-data':[";
  for (const auto byte : sample(seed)) line += std::to_string(byte) + ",";
  line.back() = ']';
  return line + tail;
}

inline std::string hex_line(int seed, const char* digits = "0123456789abcdef") {
  std::string line = "prof-event ";
  for (const auto byte : sample(seed)) line += {digits[byte >> 4], digits[byte & 15]};
  return line;
}

inline std::string raw_record(int seed) {
  const record_bytes bytes = sample(seed);
  return {bytes.begin(), bytes.end()};
}

// Reads `file` from the start, and closes it.
inline std::string read_all(std::FILE* file) {
  std::string text(1 << 16, '\0');
  std::rewind(file);
  text.resize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  return text;
}

// " LINE:SEED", the way drain() shows a record. Piece by piece: GCC 12 at -O3
// warns falsely about "literal" + std::string.
inline void add_record(std::string& seen, std::uint64_t at, int seed) {
  seen += ' ';
  seen += std::to_string(at);
  seen += ':';
  seen += std::to_string(seed);
}

// "FORM LINE:SEED..." (raw: "OFFSET:SEED"; seed 256 for bytes of no sample;
// the calendar text in brackets), then " | " and the fault line if there is
// one, then whatever went to the messages.
inline std::string drain(std::unique_ptr<inspect::byte_source> source, const std::string& file,
                         std::optional<inspect::input_form> form = std::nullopt) {
  std::FILE* messages = std::tmpfile();
  const auto records = inspect::open_records(std::move(source), file, {form, false, messages});
  std::string seen(inspect::form_name(records->form()));
  inspect::input_record record;
  while (records->next(record)) {
    int seed = 0;
    while (seed < 256 && sample(seed) != record.bytes) ++seed;
    const bool raw = records->form() == inspect::input_form::raw;
    add_record(seen, raw ? record.offset : record.line, seed);
    if (record.calendar_text) (seen += '[').append(*record.calendar_text) += ']';
  }
  if (records->next(record)) seen += " | a record after the end";
  if (records->fault()) seen += " | " + inspect::fault_line(*records->fault());
  return seen + read_all(messages);
}

}  // namespace inspect_test
