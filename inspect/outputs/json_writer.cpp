#include "inspect/outputs/json_writer.h"

#include <charconv>
#include <cmath>

#include "inspect/input/utf8.h"
#include "liblog_zol/general_notation.h"

namespace inspect {

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

namespace {

constexpr std::uint64_t exact_limit = std::uint64_t{1} << 53;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

void append_exact_json(std::string& out, std::string_view json) {
  bool in_string = false;
  std::size_t at = 0;
  while (at < json.size()) {
    const char c = json[at];
    if (in_string) {
      out += c;
      if (c == '\\' && at + 1 < json.size()) out += json[++at];
      else if (c == '"') in_string = false;
      ++at;
      continue;
    }
    if (c == '"') in_string = true;
    if (!is_digit(c) && !(c == '-' && at + 1 < json.size() && is_digit(json[at + 1]))) {
      out += c;
      ++at;
      continue;
    }
    std::size_t end = at + 1;
    while (end < json.size() && (is_digit(json[end]) || json[end] == '.' || json[end] == 'e' ||
                                 json[end] == 'E' || json[end] == '+' || json[end] == '-'))
      ++end;
    const std::string_view number = json.substr(at, end - at);
    const std::string_view digits = number.substr(number.front() == '-' ? 1 : 0);
    std::uint64_t value = 0;
    const auto [past, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool integer = past == digits.data() + digits.size();
    if (integer && (error != std::errc{} || value >= exact_limit)) {
      out += '"';
      out += number;
      out += '"';
    } else {
      out += number;
    }
    at = end;
  }
}

void json_writer::new_line() {
  out_ += '\n';
  out_.append(2 * first_.size(), ' ');
}

void json_writer::separate() {
  if (after_key_) {
    after_key_ = false;
    return;
  }
  if (!first_.empty()) {
    if (!first_.back()) out_ += ',';
    first_.back() = false;
    if (indent_) new_line();
  }
  if (break_) {
    out_ += '\n';
    break_ = false;
  }
}

void json_writer::close(char bracket) {
  const bool empty = first_.back();
  first_.pop_back();
  if (indent_ && !empty) new_line();
  out_ += bracket;
}

json_writer& json_writer::begin_object() {
  separate();
  out_ += '{';
  first_.push_back(true);
  return *this;
}

json_writer& json_writer::begin_members() {
  first_.push_back(true);
  return *this;
}

json_writer& json_writer::end_object() {
  close('}');
  return *this;
}

json_writer& json_writer::begin_array() {
  separate();
  out_ += '[';
  first_.push_back(true);
  return *this;
}

json_writer& json_writer::end_array() {
  close(']');
  return *this;
}

json_writer& json_writer::key(std::string_view name) {
  separate();
  append_json_string(out_, name);
  out_ += indent_ ? ": " : ":";
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
  char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  const bool quoted = exact_ && number >= exact_limit;
  if (quoted) out_ += '"';
  out_.append(digits, static_cast<std::size_t>(end - digits));
  if (quoted) out_ += '"';
  return *this;
}

json_writer& json_writer::value(std::int64_t number) {
  separate();
  char digits[24];
  char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  const std::uint64_t magnitude =
      number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
  const bool quoted = exact_ && magnitude >= exact_limit;
  if (quoted) out_ += '"';
  out_.append(digits, static_cast<std::size_t>(end - digits));
  if (quoted) out_ += '"';
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

json_writer& json_writer::raw_exact(std::string_view json) {
  separate();
  if (exact_)
    append_exact_json(out_, json);
  else
    out_ += json;
  return *this;
}

}  // namespace inspect
