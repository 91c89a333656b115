#pragma once

// Inputs made from records whose bytes follow from a seed, and a reader
// drained into one line a test compares.

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "inspect/input/input_reader.h"

namespace inspect_test {

using record_bytes = std::array<std::uint8_t, 48>;

inline record_bytes sample(int seed) {
  record_bytes bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(seed * 37 + static_cast<int>(i) * 11);
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
// the calendar text in brackets), " | nothing" when the input held nothing
// of its form, then the damage told; or "| FAULT LINE" when nothing could be
// made of the input.
inline std::string drain(std::unique_ptr<inspect::byte_source> source, const std::string& file,
                         std::optional<inspect::input_form> form = std::nullopt) {
  inspect::input_fault fault;
  std::optional<inspect::opened_input> input =
      inspect::open_input(std::move(source), file, {form, nullptr}, fault);
  if (!input) return "| " + inspect::fault_line(fault);
  const inspect::input_form found = input->form;
  std::string seen(inspect::form_of(found).name);
  std::FILE* messages = std::tmpfile();
  inspect::damage_log damage(file, messages);
  const auto records = inspect::read_records(std::move(*input), damage);
  inspect::input_record record;
  while (records->next(record)) {
    int seed = 0;
    while (seed < 256 && sample(seed) != record.bytes) ++seed;
    const bool raw = found == inspect::input_form::raw;
    add_record(seen, raw ? record.offset : record.line, seed);
    if (record.calendar_text) (seen += '[').append(*record.calendar_text) += ']';
  }
  if (records->next(record)) seen += " | a record after the end";
  if (!records->found_form()) seen += " | nothing";
  damage.finish();
  return seen + read_all(messages);
}

}  // namespace inspect_test
