#include "inspect/views/json_text.h"

#include <charconv>
#include <cmath>

#include "inspect/utf8.h"
#include "liblog_zol/general_notation.h"

namespace inspect::views {

void append_json_string(std::string& out, std::string_view text) {
  static constexpr char hex[] = "0123456789abcdef";
  const bool utf8 = valid_utf8(text);
  out += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte == '"' || byte == '\\') {
      out += '\\';
      out += c;
    } else if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !utf8)) {
      out += "\\u00";
      out += hex[byte >> 4];
      out += hex[byte & 0xf];
    } else {
      out += c;
    }
  }
  out += '"';
}

void json_writer::separate() {
  if (after_key_) {
    after_key_ = false;
    return;
  }
  if (!first_.empty()) {
    if (!first_.back()) out_ += ',';
    first_.back() = false;
  }
  if (break_) {
    out_ += '\n';
    break_ = false;
  }
}

json_writer& json_writer::begin_object() {
  separate();
  out_ += '{';
  first_.push_back(true);
  return *this;
}

json_writer& json_writer::end_object() {
  out_ += '}';
  first_.pop_back();
  return *this;
}

json_writer& json_writer::begin_array() {
  separate();
  out_ += '[';
  first_.push_back(true);
  return *this;
}

json_writer& json_writer::end_array() {
  out_ += ']';
  first_.pop_back();
  return *this;
}

json_writer& json_writer::key(std::string_view name) {
  separate();
  append_json_string(out_, name);
  out_ += ':';
  after_key_ = true;
  return *this;
}

json_writer& json_writer::value(std::string_view text) {
  separate();
  append_json_string(out_, text);
  return *this;
}

json_writer& json_writer::value(std::uint64_t number) {
  separate();
  char digits[24];
  out_.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
  return *this;
}

json_writer& json_writer::value(std::int64_t number) {
  separate();
  char digits[24];
  out_.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
  return *this;
}

json_writer& json_writer::value(bool flag) {
  separate();
  out_ += flag ? "true" : "false";
  return *this;
}

json_writer& json_writer::number(double value) {
  if (!std::isfinite(value)) return null();
  separate();
  char digits[48];
  out_.append(digits, zol::write_round_trip(value, digits));
  return *this;
}

json_writer& json_writer::null() {
  separate();
  out_ += "null";
  return *this;
}

json_writer& json_writer::raw(std::string_view json) {
  separate();
  out_ += json;
  return *this;
}

}  // namespace inspect::views
