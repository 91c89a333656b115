#pragma once

// Payload layouts as data: each field a key, where its value lies in the
// record, what it is and its width in the text line. A layout goes to the
// printer with one loop, field by field.

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "liblog_zol/profile_record.h"
#include "liblog_zol/record_printer.h"

namespace zol {

// The text printer writes the first three itself: keep them first.
enum class field_form : std::uint8_t {
  number,    // unsigned little-endian integer of `size` bytes
  constant,  // `value`, whatever the record holds
  hex,       // u32 in lowercase hex between apostrophes; the width pads the
             // opening apostrophe alone
  text,      // at most `size` characters, up to the first zero, quoted
  bytes,     // `size` bytes as a byte list; with `count_at`, no more than
             // the u16 there says
};

// " 'key':", the key as the text line writes it, in a fixed-size array that
// the line copies whole.
using item_key = std::array<char, 32>;

constexpr item_key make_item_key(std::string_view key) {
  if (key.size() + 4 > item_key{}.size()) throw "a key runs to 28 characters at most";
  item_key text{};
  text[0] = ' ';
  text[1] = '\'';
  for (std::size_t i = 0; i < key.size(); ++i) text[i + 2] = key[i];
  text[key.size() + 2] = '\'';
  text[key.size() + 3] = ':';
  return text;
}

// "packet-size" -> "packet_size", "reportID" -> "report_id",
// "clickCountIsTerminal" -> "click_count_is_terminal": the JSON views' keys.
// Writes at most twice the key's size at `out`; returns the end.
constexpr char* write_snake_case(char* out, std::string_view key) {
  char previous = '_';
  for (const char c : key) {
    if (c == '-') {
      *out++ = '_';
    } else if (c >= 'A' && c <= 'Z') {
      const bool after_word =
          (previous >= 'a' && previous <= 'z') || (previous >= '0' && previous <= '9');
      if (after_word) *out++ = '_';
      *out++ = static_cast<char>(c - 'A' + 'a');
    } else {
      *out++ = c;
    }
    previous = c;
  }
  return out;
}

// "\"key\":", the key in snake_case, as the JSON printer writes it; the
// array is copied whole and `size` of it kept.
struct json_key {
  std::array<char, 64> text{};
  std::uint8_t size = 0;
};

constexpr json_key make_json_key(std::string_view key) {
  if (key.size() > 28) throw "a key runs to 28 characters at most";
  json_key made;
  char* out = made.text.data();
  *out++ = '"';
  out = write_snake_case(out, key);
  *out++ = '"';
  *out++ = ':';
  made.size = static_cast<std::uint8_t>(out - made.text.data());
  return made;
}

// A key's size and last letter: the JSON printer tells a key that comes
// again in a record by it before it compares text.
constexpr std::uint64_t key_signature(std::string_view key) {
  return std::uint64_t{key.size()} << 8 | (key.empty() ? 0u : static_cast<unsigned char>(key.back()));
}

struct payload_field {
  std::string_view key;
  field_form form;
  std::uint8_t offset = 0;
  std::uint8_t size = 0;
  std::uint8_t width = 0;  // 0: no width
  std::uint8_t count_at = 0;
  std::uint32_t value = 0;
  item_key text_key = make_item_key(key);
  json_key json = make_json_key(key);
  std::uint64_t signature = key_signature(key);
};

constexpr payload_field number_field(std::string_view key, std::uint8_t offset,
                                     std::uint8_t size, std::uint8_t width) {
  return {.key = key, .form = field_form::number, .offset = offset, .size = size,
          .width = width};
}
constexpr payload_field constant_field(std::string_view key, std::uint32_t value,
                                       std::uint8_t width) {
  return {.key = key, .form = field_form::constant, .width = width, .value = value};
}
constexpr payload_field hex_field(std::string_view key, std::uint8_t offset,
                                  std::uint8_t width) {
  return {.key = key, .form = field_form::hex, .offset = offset, .size = 4, .width = width};
}
constexpr payload_field text_field(std::string_view key, std::uint8_t offset,
                                   std::uint8_t size, std::uint8_t width) {
  return {.key = key, .form = field_form::text, .offset = offset, .size = size,
          .width = width};
}
constexpr payload_field bytes_field(std::string_view key, std::uint8_t offset,
                                    std::uint8_t size, std::uint8_t width,
                                    std::uint8_t count_at = 0) {
  return {.key = key, .form = field_form::bytes, .offset = offset, .size = size,
          .width = width, .count_at = count_at};
}

// The value of one field of a record.
inline field_value payload_value(const profile_record& record, const payload_field& field) {
  const byte_reader& bytes = record.bytes();
  switch (field.form) {
    case field_form::number:
      switch (field.size) {
        case 1: return field_value::of_unsigned(bytes.u8(field.offset));
        case 2: return field_value::of_unsigned(bytes.u16(field.offset));
        case 4: return field_value::of_unsigned(bytes.u32(field.offset));
        default: return field_value::of_unsigned(bytes.u64(field.offset));
      }
    case field_form::constant:
      return field_value::of_unsigned(field.value);
    case field_form::hex:
      return field_value::of_hex_word(bytes.u32(field.offset));
    case field_form::text: {
      // Up to the first zero; a field without one gives all its characters.
      const auto chars = bytes.bytes(field.offset, field.size);
      const std::string_view all(reinterpret_cast<const char*>(chars.data()), chars.size());
      return field_value::of_text(all.substr(0, all.find('\0')));
    }
    case field_form::bytes: {
      std::size_t count = field.size;
      if (field.count_at && bytes.u16(field.count_at) < count) count = bytes.u16(field.count_at);
      return field_value::of_bytes(bytes.bytes(field.offset, count));
    }
  }
  return field_value::of_unsigned(0);
}

// Each field of a layout through printer.field(), in table order.
void each_field(record_printer& printer, const profile_record& record,
                std::span<const payload_field> fields);

// A layout to the printer.
inline void write_fields(record_printer& printer, const profile_record& record,
                         std::span<const payload_field> fields) {
  printer.fields(record, fields);
}

}  // namespace zol
