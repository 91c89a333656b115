#include "inspect/outputs/json_writer.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "inspect/input/utf8.h"
#include "liblog_zol/general_notation.h"

namespace inspect {

namespace {

// Whether every byte goes into a JSON string as it is: printable ASCII
// other than the quote and the backslash. Eight bytes a step, so that long
// texts (a phone's replies in hex) are copied whole; a word it cannot clear
// goes to the byte-wise writer.
bool plain_ascii(std::string_view text) {
  constexpr std::uint64_t ones = 0x0101010101010101;
  constexpr std::uint64_t highs = 0x8080808080808080;
  const auto any_zero = [](std::uint64_t v) { return (v - ones) & ~v & highs; };
  std::size_t at = 0;
  for (; at + 8 <= text.size(); at += 8) {
    std::uint64_t w;
    std::memcpy(&w, text.data() + at, 8);
    const std::uint64_t control = (w - 0x20 * ones) & ~w & highs;  // a byte below 0x20
    const std::uint64_t high = (w + ones) | w;                      // 0x7f and up
    if ((control | (high & highs) | any_zero(w ^ ('"' * ones)) | any_zero(w ^ ('\\' * ones))) != 0)
      return false;
  }
  for (; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte >= 0x7f || byte == '"' || byte == '\\') return false;
  }
  return true;
}

}  // namespace

void append_json_string(std::string& out, std::string_view text) {
  static constexpr char hex[] = "0123456789abcdef";
  out += '"';
  if (plain_ascii(text)) {
    out += text;
    out += '"';
    return;
  }
  const bool utf8 = valid_utf8(text);
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

}  // namespace

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

}  // namespace inspect
