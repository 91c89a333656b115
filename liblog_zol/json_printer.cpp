#include "liblog_zol/json_printer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <charconv>
#include <cstdint>
#include <type_traits>

#include "liblog_zol/general_notation.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/name_tables.h"
#include "liblog_zol/payload_fields.h"
#include "liblog_zol/text_shapes.h"

namespace zol {
namespace {

// The writers below put text at a cursor inside room reserved beforehand.
// Short texts inline, without a library call.
void put(char*& p, std::string_view text) {
  copy_short(p, text.data(), text.size());
  p += text.size();
}

void put_unsigned(char*& p, std::uint64_t value) {
  // Ids and small counts are most of a record's numbers.
  if (value < 10) {
    *p++ = static_cast<char>('0' + value);
    return;
  }
  p += decimal_size(value);
  decimal_ending_at(p, value);
}

void put_signed(char*& p, std::int64_t value) {
  if (value < 0) *p++ = '-';
  put_unsigned(p, value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value));
}

// An integer, quoted when `quoted`; room for 24 characters.
template <typename integer>
void put_integer(char*& p, integer value, bool quoted) {
  if (quoted) *p++ = '"';
  if constexpr (std::is_signed_v<integer>)
    put_signed(p, value);
  else
    put_unsigned(p, value);
  if (quoted) *p++ = '"';
}

// At most 6 characters per byte, and the quotes.
constexpr std::size_t string_room(std::size_t size) { return 6 * size + 2; }

// Record text is bytes, not UTF-8: a byte outside ASCII is written as the
// code point of the same value, so the string is valid JSON and the bytes
// can be had back.
void put_string(char*& p, std::string_view text) {
  *p++ = '"';
  // Eight bytes at a time while none needs escaping: most record text.
  constexpr std::uint64_t ones = 0x0101010101010101, highs = 0x8080808080808080;
  const auto has_zero = [](std::uint64_t word) { return (word - ones) & ~word & highs; };
  while (text.size() >= 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data(), sizeof word);
    // A lane below 0x20 or from 0x7f, a quote or a backslash.
    const std::uint64_t special = has_zero(word & (ones * 0xe0)) | ((word + ones) & highs) |
                                  (word & highs) | has_zero(word ^ (ones * '"')) |
                                  has_zero(word ^ (ones * '\\'));
    if (special != 0) break;
    std::memcpy(p, &word, sizeof word);
    p += 8;
    text.remove_prefix(8);
  }
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte == '"' || byte == '\\') {
      *p++ = '\\';
      *p++ = c;
    } else if (byte < 0x20 || byte >= 0x7f) {
      put(p, "\\u00");
      *p++ = hex_digits[byte >> 4];
      *p++ = hex_digits[byte & 0xf];
    } else {
      *p++ = c;
    }
  }
  *p++ = '"';
}

// Numbers from 2^53 on lose digits in a browser's doubles.
constexpr std::uint64_t exact_in_doubles = std::uint64_t{1} << 53;

// Keys are short: a loop beats a library call.
bool same_text(std::string_view a, std::string_view b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i]) return false;
  return true;
}

// The snake_case text of the keys seen last, by where they lie: keys are the
// decoders' table entries and literals, so a key is always at one address.
struct snake_key {
  const char* data = nullptr;
  std::size_t size = 0;
  std::size_t snake_size = 0;
  char snake[64];
};

constexpr std::size_t cached_key_size = sizeof snake_key::snake / 2;
thread_local std::array<snake_key, 256> snake_keys;

// At most twice the key's size, and room for 64 characters.
void put_key(char*& p, std::string_view key) {
  if (key.size() > cached_key_size) {
    p = write_snake_case(p, key);
    return;
  }
  const auto address = reinterpret_cast<std::uintptr_t>(key.data());
  snake_key& entry = snake_keys[(address ^ (address >> 8)) % snake_keys.size()];
  if (entry.data != key.data() || entry.size != key.size()) {
    const char* const end = write_snake_case(entry.snake, key);
    entry.data = key.data();
    entry.size = key.size();
    entry.snake_size = static_cast<std::size_t>(end - entry.snake);
  }
  std::memcpy(p, entry.snake, sizeof entry.snake);
  p += entry.snake_size;
}

struct local_second {
  bool valid = false;
  const local_zone* zone = nullptr;
  std::int64_t seconds = 0;
  char date_time[32];  // "2024-03-04T10:15:02"
  std::size_t size = 0;
  char offset[8];      // "+01:00"
};

const local_second* local_second_of(std::uint64_t seconds, const local_zone& zone) {
  // One a thread: the desk tools decode captures on several at once.
  thread_local local_second last;
  if (last.valid && last.seconds == static_cast<std::int64_t>(seconds) && last.zone == &zone)
    return &last;
  last.valid = false;
  std::tm local{};
  if (!zone.local_time(static_cast<std::int64_t>(seconds), local)) return nullptr;
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
  last.zone = &zone;
  last.valid = true;
  return &last;
}

// Room for 48 characters.
bool put_iso_time(char*& p, std::uint64_t microseconds, const local_zone& zone) {
  const local_second* second = local_second_of(microseconds / 1000000, zone);
  if (second == nullptr) return false;
  put(p, {second->date_time, second->size});
  *p++ = '.';
  std::uint64_t rest = microseconds % 1000000;
  for (int digit = 5; digit >= 0; --digit, rest /= 10)
    p[digit] = static_cast<char>('0' + rest % 10);
  p += 6;
  put(p, {second->offset, 6});
  return true;
}

}  // namespace

bool iso_calendar_time(std::uint64_t microseconds, std::string& out, const local_zone& zone) {
  char text[48];
  char* p = text;
  if (!put_iso_time(p, microseconds, zone)) return false;
  out.append(text, p);
  return true;
}

void json_printer::begin(const record_header& header) {
  out_.clear();
  const header_names header_text = header.names();
  const name_text type_text = type_name(header.category_id(), header.type_id());
  const struct {
    std::string_view id_key;
    std::string_view name_key;
    std::uint32_t id;
    std::string_view name;
  } names[] = {
      {",\"category_id\":", ",\"category\":", header.category_id(), header_text.category.view()},
      {",\"component_id\":", ",\"component\":", header.component_id(),
       header_text.component.view()},
      {",\"event_id\":", ",\"event\":", header.event_id(), header_text.event.view()},
      {",\"type_id\":", ",\"type\":", header.type_id(), type_text.view()},
  };
  std::size_t room = 512;
  for (const auto& name : names) room += string_room(name.name.size());
  char* p = out_.reserve(room + string_room(origin_.source.size()) + leading_.size());
  put(p, "{");
  if (!leading_.empty()) {
    put(p, leading_);
    put(p, ",");
  }
  put(p, "\"schema_version\":");
  put_unsigned(p, records_schema_version);
  put(p, ",\"ordinal\":");
  put_unsigned(p, origin_.ordinal);
  put(p, ",\"source\":");
  if (origin_.source.empty())
    put(p, "null");
  else
    put_string(p, origin_.source);
  put(p, ",\"pass\":");
  if (origin_.pass)
    put_unsigned(p, *origin_.pass);
  else
    put(p, "null");
  put(p, ",\"index\":");
  if (origin_.index)
    put_unsigned(p, *origin_.index);
  else
    put(p, "null");
  for (const auto& name : names) {
    put(p, name.id_key);
    put_unsigned(p, name.id);
    put(p, name.name_key);
    // A name needs no escape.
    *p++ = '"';
    put(p, name.name);
    *p++ = '"';
  }
  put(p, ",\"type_word\":");
  put_unsigned(p, header.type_word);
  put(p, ",\"sequence_num\":");
  put_unsigned(p, header.sequence_number);
  put(p, ",\"timestamp\":");
  put_unsigned(p, header.timestamp);
  put(p, ",\"payload\":{");
  out_.commit(p);
  payload_start_ = out_.view().size() - 1;
  first_field_ = true;
  seen_count_ = 0;
  seen_mask_ = 0;
}

// Inlined where fields are written, the most of a record's work.
[[gnu::always_inline]] inline unsigned json_printer::key_count(std::string_view key,
                                                                std::uint64_t signature) {
  // The list is searched only when the signature's bit is set, and text
  // compared only when the signature agrees.
  const std::uint64_t bit = std::uint64_t{1} << ((signature ^ (signature >> 8) * 7) & 63);
  if ((seen_mask_ & bit) != 0) [[unlikely]] {
    for (std::size_t i = 0; i < seen_count_; ++i) {
      if (seen_signatures_[i] == signature &&
          (seen_[i].key.data() == key.data() || same_text(seen_[i].key, key)))
        return ++seen_[i].count;
    }
  }
  if (seen_count_ < std::size(seen_)) {
    seen_mask_ |= bit;
    seen_signatures_[seen_count_] = signature;
    seen_[seen_count_++] = {key, 1};
  }
  return 1;
}

void json_printer::field(std::string_view key, std::uint8_t, const field_value& value) {
  write_field(key, key_count(key, key_signature(key)), value);
}

void json_printer::write_field(std::string_view key, unsigned repeat, const field_value& value) {
  std::size_t room = 2 * key.size() + sizeof snake_key::snake + 32;
  switch (value.kind) {
    case value_kind::name:
    case value_kind::text: room += string_room(value.text.size()); break;
    default: room += 48; break;
  }
  char* p = out_.reserve(room);
  if (!first_field_) *p++ = ',';
  first_field_ = false;
  *p++ = '"';
  put_key(p, key);
  if (repeat > 1) {
    *p++ = '_';
    put_unsigned(p, repeat);
  }
  put(p, "\":");
  switch (value.kind) {
    case value_kind::unsigned_number:
    case value_kind::hex_word:
      put_integer(p, value.number, exact_ && value.number >= exact_in_doubles);
      break;
    case value_kind::signed_number: {
      const std::int64_t number = value.signed_number();
      const std::uint64_t magnitude =
          number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
      put_integer(p, number, exact_ && magnitude >= exact_in_doubles);
      break;
    }
    case value_kind::floating:
      p += write_round_trip(value.floating, p);
      break;
    case value_kind::name:
    case value_kind::text:
      put_string(p, value.text);
      break;
    case value_kind::byte_list:
      // A JSON array has the text line's shape.
      out_.commit(p);
      out_ << byte_list{value.bytes};
      return;
  }
  out_.commit(p);
}

// Numbers and hex words, most fields, straight from the record under the
// layout's own key text; the rest, and a key that comes again, as field().
void json_printer::fields(const profile_record& record, std::span<const payload_field> layout) {
  const byte_reader& bytes = record.bytes();
  for (const payload_field& field : layout) {
    const unsigned repeat = key_count(field.key, field.signature);
    if (field.form > field_form::hex || repeat > 1) {
      write_field(field.key, repeat, payload_value(record, field));
      continue;
    }
    std::uint64_t value = field.value;
    if (field.form == field_form::hex) {
      value = bytes.u32(field.offset);
    } else if (field.form == field_form::number) {
      switch (field.size) {
        case 1: value = bytes.u8(field.offset); break;
        case 2: value = bytes.u16(field.offset); break;
        case 4: value = bytes.u32(field.offset); break;
        default: value = bytes.u64(field.offset); break;
      }
    }
    char* p = out_.reserve(sizeof field.json.text + 32);
    if (!first_field_) *p++ = ',';
    first_field_ = false;
    std::memcpy(p, field.json.text.data(), sizeof field.json.text);
    p += field.json.size;
    put_integer(p, value, exact_ && value >= exact_in_doubles);
    out_.commit(p);
  }
}

void json_printer::end(std::span<const std::uint8_t> bytes, const std::uint64_t* calendar) {
  payload_end_ = out_.view().size() + 1;
  char* p = out_.reserve(128 + 2 * bytes.size());
  put(p, "},\"calendar_time\":");
  char* const time_start = p;
  *p++ = '"';
  if (calendar && put_iso_time(p, *calendar, *zone_)) {
    *p++ = '"';
  } else {
    p = time_start;
    put(p, "null");
  }
  put(p, ",\"bytes\":\"");
  if (bytes.size() == profile_record_size) {
    write_profile_hex(p, bytes.data());
    p += 2 * profile_record_size;
  }
  put(p, "\"}");
  out_.commit(p);
}

}  // namespace zol
