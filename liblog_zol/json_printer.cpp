#include "liblog_zol/json_printer.h"

#include <array>
#include <charconv>
#include <ctime>

#include "liblog_zol/general_notation.h"
#include "liblog_zol/name_tables.h"

namespace zol {
namespace {

void append_unsigned(std::string& out, std::uint64_t value) {
  char digits[20];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out.append(digits, end);
}

void append_signed(std::string& out, std::int64_t value) {
  char digits[21];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out.append(digits, end);
}

// Record text is bytes, not UTF-8: a byte outside ASCII is written as the
// code point of the same value, so the string is valid JSON and the bytes
// can be had back.
void append_string(std::string& out, std::string_view text) {
  static constexpr char hex[] = "0123456789abcdef";
  out += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte == '"' || byte == '\\') {
      out += '\\';
      out += c;
    } else if (byte < 0x20 || byte >= 0x7f) {
      out += "\\u00";
      out += hex[byte >> 4];
      out += hex[byte & 0xf];
    } else {
      out += c;
    }
  }
  out += '"';
}

// "packet-size" -> "packet_size", "reportID" -> "report_id",
// "clickCountIsTerminal" -> "click_count_is_terminal".
void append_snake_case(std::string& out, std::string_view key) {
  char previous = '_';
  for (const char c : key) {
    if (c == '-') {
      out += '_';
    } else if (c >= 'A' && c <= 'Z') {
      const bool after_word = (previous >= 'a' && previous <= 'z') || (previous >= '0' && previous <= '9');
      if (after_word) out += '_';
      out += static_cast<char>(c - 'A' + 'a');
    } else {
      out += c;
    }
    previous = c;
  }
}

struct local_second {
  bool valid = false;
  std::int64_t seconds = 0;
  char date_time[32];  // "2024-03-04T10:15:02"
  std::size_t size = 0;
  char offset[8];      // "+01:00"
};

const local_second* local_second_of(std::uint64_t seconds) {
  static local_second last;
  if (last.valid && last.seconds == static_cast<std::int64_t>(seconds)) return &last;
  last.valid = false;
  static const bool zone_read = (tzset(), true);
  (void)zone_read;
  const auto time = static_cast<std::time_t>(seconds);
  std::tm local{};
  if (localtime_r(&time, &local) == nullptr) return nullptr;
  last.size = std::strftime(last.date_time, sizeof last.date_time, "%Y-%m-%dT%H:%M:%S", &local);
  if (last.size == 0) return nullptr;
  const long offset_minutes = local.tm_gmtoff / 60;
  const long magnitude = offset_minutes < 0 ? -offset_minutes : offset_minutes;
  last.offset[0] = offset_minutes < 0 ? '-' : '+';
  last.offset[1] = static_cast<char>('0' + magnitude / 600 % 10);
  last.offset[2] = static_cast<char>('0' + magnitude / 60 % 10);
  last.offset[3] = ':';
  last.offset[4] = static_cast<char>('0' + magnitude % 60 / 10);
  last.offset[5] = static_cast<char>('0' + magnitude % 10);
  last.seconds = static_cast<std::int64_t>(seconds);
  last.valid = true;
  return &last;
}

}  // namespace

bool iso_calendar_time(std::uint64_t microseconds, std::string& out) {
  const local_second* second = local_second_of(microseconds / 1000000);
  if (second == nullptr) return false;
  out.append(second->date_time, second->size);
  out += '.';
  char fraction[6];
  std::uint64_t rest = microseconds % 1000000;
  for (int digit = 5; digit >= 0; --digit, rest /= 10)
    fraction[digit] = static_cast<char>('0' + rest % 10);
  out.append(fraction, sizeof fraction);
  out.append(second->offset, 6);
  return true;
}

void json_printer::write_key(std::string_view key) {
  out_ += ",\"";
  out_ += key;
  out_ += "\":";
}

void json_printer::write_name(std::string_view name) { append_string(out_, name); }

void json_printer::begin(const record_header& header) {
  out_.clear();
  out_ += "{\"schema_version\":";
  append_unsigned(out_, records_schema_version);
  write_key("ordinal");
  append_unsigned(out_, origin_.ordinal);
  write_key("source");
  if (origin_.source.empty())
    out_ += "null";
  else
    append_string(out_, origin_.source);
  write_key("pass");
  if (origin_.pass)
    append_unsigned(out_, *origin_.pass);
  else
    out_ += "null";
  write_key("index");
  if (origin_.index)
    append_unsigned(out_, *origin_.index);
  else
    out_ += "null";

  const std::uint32_t type = header.type_word & 0xff;
  const struct {
    std::string_view id_key;
    std::string_view name_key;
    named_id item;
  } names[] = {
      {"category_id", "category", header.category},
      {"component_id", "component", header.component},
      {"event_id", "event", header.event},
      {"type_id", "type", {type, type_name(header.category.id, type).view()}},
  };
  for (const auto& name : names) {
    write_key(name.id_key);
    append_unsigned(out_, name.item.id);
    write_key(name.name_key);
    write_name(name.item.name);
  }
  write_key("type_word");
  append_unsigned(out_, header.type_word);
  write_key("sequence_num");
  append_unsigned(out_, header.sequence_number);
  write_key("timestamp");
  append_unsigned(out_, header.timestamp);
  out_ += ",\"payload\":{";
  first_field_ = true;
  seen_count_ = 0;
}

void json_printer::field(std::string_view key, std::uint8_t, const field_value& value) {
  unsigned repeat = 1;
  for (std::size_t i = 0; i < seen_count_; ++i) {
    if (seen_[i].key == key) {
      repeat = ++seen_[i].count;
      break;
    }
  }
  if (repeat == 1 && seen_count_ < std::size(seen_)) seen_[seen_count_++] = {key, 1};

  if (!first_field_) out_ += ',';
  first_field_ = false;
  out_ += '"';
  append_snake_case(out_, key);
  if (repeat > 1) {
    out_ += '_';
    append_unsigned(out_, repeat);
  }
  out_ += "\":";
  switch (value.kind) {
    case value_kind::unsigned_number:
    case value_kind::hex_word:
      append_unsigned(out_, value.number);
      return;
    case value_kind::signed_number:
      append_signed(out_, value.signed_number());
      return;
    case value_kind::floating: {
      char digits[48];
      out_.append(digits, write_round_trip(value.floating, digits));
      return;
    }
    case value_kind::name:
    case value_kind::text:
      append_string(out_, value.text);
      return;
    case value_kind::byte_list: {
      out_ += '[';
      bool first = true;
      for (const std::uint8_t byte : value.bytes) {
        if (!first) out_ += ',';
        first = false;
        append_unsigned(out_, byte);
      }
      out_ += ']';
      return;
    }
  }
}

void json_printer::end(std::span<const std::uint8_t> bytes, const std::uint64_t* calendar) {
  static constexpr char hex[] = "0123456789abcdef";
  out_ += '}';
  write_key("calendar_time");
  const std::size_t before = out_.size();
  out_ += '"';
  if (calendar && iso_calendar_time(*calendar, out_)) {
    out_ += '"';
  } else {
    out_.resize(before);
    out_ += "null";
  }
  write_key("bytes");
  out_ += '"';
  for (const std::uint8_t byte : bytes) {
    out_ += hex[byte >> 4];
    out_ += hex[byte & 0xf];
  }
  out_ += "\"}";
}

}  // namespace zol
