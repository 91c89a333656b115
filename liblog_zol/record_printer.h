#pragma once

// What a decoder hands out, item by item in the order of the text line, and
// the interface of those who print it: the collector's text line, JSON Lines
// and the desk tools' own views.

#include <cstdint>
#include <span>
#include <string_view>

#include "liblog_zol/name_tables.h"

namespace zol {

struct payload_field;
class profile_decoder;
class profile_record;

enum class value_kind : std::uint8_t {
  unsigned_number,
  signed_number,
  floating,
  name,       // a name from a table, quoted in the line
  hex_word,   // u32 shown in hexadecimal
  text,       // characters from the record, quoted in the line
  byte_list,  // bytes as a list of numbers
};

struct field_value {
  value_kind kind;
  std::uint64_t number = 0;  // unsigned_number, hex_word; signed_number as two's complement
  double floating = 0;
  std::string_view text = {};               // name, text
  std::span<const std::uint8_t> bytes = {};  // byte_list

  static field_value of_unsigned(std::uint64_t value) noexcept {
    return {.kind = value_kind::unsigned_number, .number = value};
  }
  static field_value of_signed(std::int64_t value) noexcept {
    return {.kind = value_kind::signed_number, .number = static_cast<std::uint64_t>(value)};
  }
  static field_value of_floating(double value) noexcept {
    return {.kind = value_kind::floating, .floating = value};
  }
  static field_value of_name(std::string_view name) noexcept {
    return {.kind = value_kind::name, .text = name};
  }
  static field_value of_hex_word(std::uint32_t value) noexcept {
    return {.kind = value_kind::hex_word, .number = value};
  }
  static field_value of_text(std::string_view chars) noexcept {
    return {.kind = value_kind::text, .text = chars};
  }
  static field_value of_bytes(std::span<const std::uint8_t> bytes) noexcept {
    return {.kind = value_kind::byte_list, .bytes = bytes};
  }
  std::int64_t signed_number() const noexcept { return static_cast<std::int64_t>(number); }
};

// The names of a record's ids, as its decoder's tables give them.
struct header_names {
  name_text category;
  name_text component;
  name_text event;
};

// The header of a record. The names are asked of the decoder when a printer
// needs them: the text printer keeps the text of recent headers.
struct record_header {
  const profile_decoder& decoder;
  std::uint32_t type_word;
  std::uint64_t timestamp;
  std::uint32_t sequence_number;

  std::uint32_t category_id() const noexcept { return type_word >> 24; }
  std::uint32_t component_id() const noexcept { return (type_word >> 16) & 0xff; }
  std::uint32_t event_id() const noexcept { return (type_word >> 8) & 0xff; }
  std::uint32_t type_id() const noexcept { return type_word & 0xff; }
  header_names names() const;
};

// The calls come in this order for every record: begin, the payload fields
// (none or many; a key may come more than once), end. No virtual destructor:
// printers are owned where they are made.
class record_printer {
 public:
  virtual void begin(const record_header& header) = 0;
  // `width`: the text line's field width, 0 for none.
  virtual void field(std::string_view key, std::uint8_t width, const field_value& value) = 0;
  // A layout's fields, in table order: as many field() calls, or a loop of
  // the printer's own over the same table.
  virtual void fields(const profile_record& record, std::span<const payload_field> layout) = 0;
  // The 48 record bytes, and the wall-clock microseconds when the clock is
  // known.
  virtual void end(std::span<const std::uint8_t> bytes, const std::uint64_t* calendar) = 0;
};

}  // namespace zol
