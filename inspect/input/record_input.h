#pragma once

// The records of an input file, taken back one at a time from whichever form
// the file holds: a harvest capture (the profile lines' binary-data), the
// "prof-event " hex lines, or raw 48-byte records end to end. Files may be
// gzip-compressed. Reads in fixed-size chunks, so memory stays flat whatever
// the input size. Faults are reported, never thrown.

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace inspect {

enum class input_form { harvest, hex, raw };

// "harvest", "hex", "raw".
std::string_view form_name(input_form form);
std::optional<input_form> form_of_name(std::string_view name);

// Where an input went wrong: printed as one line,
// "kelvra-inspect: FILE: WHERE: FAULT".
struct input_fault {
  std::string file;   // as the user named it; "-" reads as "standard input"
  std::string where;  // "line 12" or "byte 480"
  std::string fault;  // what is wrong, lower case, no full stop
};

std::string fault_line(const input_fault& fault);

struct input_record {
  std::array<std::uint8_t, 48> bytes{};
  // Harvest and hex: the 1-based line the record came from; raw: 0.
  std::uint64_t line = 0;
  // Raw: the byte offset of the record in the (uncompressed) input.
  std::uint64_t offset = 0;
  // Harvest: the line's 'calendar-time' text, when it has one. Valid until
  // the next call of next().
  std::optional<std::string_view> calendar_text;
};

// Bytes from a file, standard input or memory.
class byte_source {
 public:
  virtual ~byte_source() = default;
  // Up to out.size() bytes; 0 at the end. False on a read fault, with the
  // text in `fault`.
  virtual bool read(std::span<char> out, std::size_t& got, std::string& fault) = 0;
  // Bytes of the underlying file consumed so far and its size, for progress;
  // size 0 when unknown (a pipe).
  virtual std::uint64_t consumed() const = 0;
  virtual std::uint64_t size() const = 0;
};

// `path` "-" is standard input. gzip by content (zlib), plain files as they
// are. Null, with `fault` filled, when the file cannot be opened.
std::unique_ptr<byte_source> open_file(const std::string& path, input_fault& fault);
std::unique_ptr<byte_source> memory_source(std::string_view bytes);

struct input_options {
  std::optional<input_form> form;  // detected from the content when empty
  bool progress = false;           // a progress line on `messages`
  // Where the raw tail warning and the progress line go.
  std::FILE* messages = stderr;
};

class record_input {
 public:
  virtual ~record_input() = default;
  // The next record; false at the end or on a fault (then fault() is set).
  virtual bool next(input_record& record) = 0;
  virtual const std::optional<input_fault>& fault() const = 0;
  virtual input_form form() const = 0;
};

// `file` names the input in fault lines and warnings. A raw input whose size
// is not a whole number of records warns once on options.messages about the
// tail and ends after the last whole record.
std::unique_ptr<record_input> open_records(std::unique_ptr<byte_source> source,
                                           std::string file, const input_options& options);

}  // namespace inspect
