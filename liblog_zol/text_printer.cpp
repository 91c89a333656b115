#include "liblog_zol/text_printer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "liblog_zol/calendar_time.h"
#include "liblog_zol/payload_fields.h"
#include "liblog_zol/text_shapes.h"

namespace zol {
namespace {

struct header_name {
  std::string_view key;
  std::uint8_t width;
  name_text header_names::*item;
};

constexpr header_name header_layout[] = {
    {"category", 8, &header_names::category},
    {"component", 8, &header_names::component},
    {"event", 12, &header_names::event},
};

constexpr std::uint8_t number_width = 10;

constexpr char spaces[16] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ',
                             ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};

// Texts that depend on the type word alone, kept for the words seen last: a
// log holds few distinct words, and the decoders are stateless, so a word
// always gives the same names.
struct word_text {
  bool valid = false;
  std::uint32_t word = 0;
  std::uint8_t size = 0;
  char chars[160];
};

class word_texts {
 public:
  static constexpr std::size_t room = sizeof word_text::chars;

  // Writes the text kept for `word` at `out` (room for `room`) and returns
  // its end, or null: the whole fixed-size array in copies the compiler
  // unrolls, rather than a library call.
  char* write(std::uint32_t word, char* out) const noexcept {
    const word_text& entry = entries_[slot(word)];
    if (!entry.valid || entry.word != word) return nullptr;
    // Most texts are shorter than this.
    constexpr std::size_t most = 112;
    std::memcpy(out, entry.chars, most);
    if (entry.size > most) std::memcpy(out + most, entry.chars + most, room - most);
    return out + entry.size;
  }
  void keep(std::uint32_t word, std::string_view text) noexcept {
    word_text& entry = entries_[slot(word)];
    entry.valid = text.size() <= sizeof entry.chars;
    if (!entry.valid) return;
    entry.word = word;
    entry.size = static_cast<std::uint8_t>(text.size());
    std::memcpy(entry.chars, text.data(), text.size());
  }

 private:
  static std::size_t slot(std::uint32_t word) noexcept {
    return (word * 0x9e3779b1u) >> (32 - slot_bits);
  }
  static constexpr unsigned slot_bits = 7;
  word_text entries_[1u << slot_bits];
};

// "{ " and the three names, by category, component and event.
thread_local word_texts header_texts;
// The type ids and the key of the byte list, by the whole word.
thread_local word_texts type_id_texts;

// The room write_number() may use: the key goes in whole, the spaces 16 at
// a time.
constexpr std::size_t number_room(std::size_t width) {
  return item_key{}.size() + std::max<std::size_t>(width, 20) + 1 + sizeof spaces;
}

// The whole array, then the pointer moved past the key's text.
[[gnu::always_inline]] inline char* write_item_key(char* out, const item_key& key,
                                                   std::size_t key_size) {
  std::memcpy(out, key.data(), key.size());
  return out + key_size + 4;
}

constexpr std::string_view timestamp_name = "timestamp";
constexpr std::string_view sequence_name = "sequence_num";
constexpr item_key timestamp_key = make_item_key(timestamp_name);
constexpr item_key sequence_key = make_item_key(sequence_name);

// `value` right-aligned in `width` and ",", written at `out` (room for
// number_room()); returns the end. The value most fields are.
[[gnu::always_inline]] inline char* write_number(char* out, std::size_t width,
                                                 std::uint64_t value) {
  // Fits a width the spaces cover when below the least value one digit wider.
  if (width <= sizeof spaces && value < decimal_least[width]) {
    // Fills its width: spaces, then the digits over their end.
    std::memcpy(out, spaces, sizeof spaces);
    char* const end = out + width;
    decimal_ending_at(end, value);
    *end = ',';
    return end + 1;
  }
  const std::size_t size = decimal_size(value);
  if (width > size) {
    const std::size_t padding = width - size;
    std::memcpy(out, spaces, sizeof spaces);
    for (std::size_t done = sizeof spaces; done < padding; done += sizeof spaces)
      std::memcpy(out + done, spaces, sizeof spaces);
    out += padding;
  }
  char* const end = out + size;
  decimal_ending_at(end, value);
  *end = ',';
  return end + 1;
}

// `value` in lowercase hexadecimal between apostrophes and ",", written at
// `out` (room for number_room()); the width pads the opening apostrophe
// alone. Returns the end.
[[gnu::always_inline]] inline char* write_hex(char* out, std::size_t width,
                                              std::uint32_t value) {
  if (width > 1) {
    const std::size_t padding = width - 1;
    for (std::size_t done = 0; done < padding; done += sizeof spaces)
      std::memcpy(out + done, spaces, sizeof spaces);
    out += padding;
  }
  *out++ = '\'';
  char* const end = out + (std::bit_width(value | 1u) + 3) / 4;
  char* digit = end;
  for (; digit - out >= 2; value >>= 8) {
    digit -= 2;
    std::memcpy(digit, hex_pairs.data() + 2 * (value & 0xff), 2);
  }
  if (digit != out) *out = hex_digits[value & 0xf];
  end[0] = '\'';
  end[1] = ',';
  return end + 2;
}

}  // namespace

[[gnu::always_inline]] inline void text_printer::number_item(std::string_view key,
                                                              std::uint8_t width,
                                                              std::uint64_t value) {
  char* const out = write_key(line_.reserve(key.size() + number_room(width)), key);
  line_.commit(write_number(out, width, value));
}

// Inlined into the table loop, where most items are written.
[[gnu::always_inline]] inline void text_printer::item(std::string_view key, std::uint8_t width,
                                                       const field_value& value) {
  if (value.kind == value_kind::unsigned_number) {
    number_item(key, width, value.number);
    return;
  }
  line_ << key_text{key};
  line_.width(width);
  switch (value.kind) {
    case value_kind::signed_number:
      line_.signed_value(value.signed_number());
      break;
    case value_kind::floating:
      line_ << value.floating;
      break;
    case value_kind::name:
    case value_kind::text:
      line_ << quoted_text{value.text};
      break;
    case value_kind::hex_word:
      // The width pads the opening apostrophe alone.
      line_ << "'";
      line_.hex() << value.number;
      line_.dec() << "'";
      break;
    case value_kind::byte_list:
      line_ << byte_list{value.bytes};
      break;
    case value_kind::unsigned_number:  // written above
      break;
  }
  line_.put(',');
}

void text_printer::begin(const record_header& header) {
  line_.clear();
  type_word_ = header.type_word;
  const std::uint32_t names_word = header.type_word >> 8;
  if (char* const kept = header_texts.write(names_word, line_.reserve(word_texts::room))) {
    line_.commit(kept);
  } else {
    const header_names names = header.names();
    line_ << "{ ";
    for (const header_name& name : header_layout) {
      line_ << key_text{name.key};
      line_.width(name.width) << quoted_text{(names.*name.item).view()} << ",";
    }
    header_texts.keep(names_word, line_.view());
  }
  char* out = line_.reserve(2 * number_room(number_width));
  out = write_item_key(out, timestamp_key, timestamp_name.size());
  out = write_number(out, number_width, header.timestamp);
  out = write_item_key(out, sequence_key, sequence_name.size());
  line_.commit(write_number(out, number_width, header.sequence_number));
}

void text_printer::field(std::string_view key, std::uint8_t width, const field_value& value) {
  item(key, width, value);
}

// A loop of its own over the table. Numbers and hex words, most fields,
// come straight from the record, written through a pointer of the loop's
// own: the line's members are read once a run, not again after every
// character stored.
void text_printer::fields(const profile_record& record, std::span<const payload_field> layout) {
  const byte_reader& bytes = record.bytes();
  char* out = line_.reserve(0);
  const char* limit = line_.limit();
  for (const payload_field& field : layout) {
    // number, constant and hex come first in field_form.
    if (field.form > field_form::hex) {
      line_.commit(out);
      item(field.key, field.width, payload_value(record, field));
      out = line_.reserve(0);
      limit = line_.limit();
      continue;
    }
    const std::size_t room = number_room(field.width);
    if (static_cast<std::size_t>(limit - out) < room) [[unlikely]] {
      line_.commit(out);
      out = line_.reserve(room);
      limit = line_.limit();
    }
    out = write_item_key(out, field.text_key, field.key.size());
    if (field.form == field_form::hex) {
      out = write_hex(out, field.width, bytes.u32(field.offset));
      continue;
    }
    std::uint64_t value = field.value;
    if (field.form == field_form::number) {
      switch (field.size) {
        case 1: value = bytes.u8(field.offset); break;
        case 2: value = bytes.u16(field.offset); break;
        case 4: value = bytes.u32(field.offset); break;
        default: value = bytes.u64(field.offset); break;
      }
    }
    out = write_number(out, field.width, value);
  }
  line_.commit(out);
}

void text_printer::end(std::span<const std::uint8_t> bytes, const std::uint64_t* calendar) {
  // "type-id" twice: first the whole word, last the type id alone.
  const std::uint32_t word = type_word_;
  calendar_text text;
  constexpr std::string_view calendar_key = ", 'calendar-time':'";
  const std::size_t room = word_texts::room + byte_list_room(bytes.size()) +
                           calendar_key.size() + sizeof text.chars + 2;
  char* out = line_.reserve(room);
  if (char* const kept = type_id_texts.write(word, out)) {
    out = kept;
  } else {
    const std::size_t start = line_.view().size();
    line_ << key_text{"type-id"} << word << ",";
    line_ << key_text{"category-id"} << (word >> 24) << ",";
    line_ << key_text{"component-id"} << ((word >> 16) & 0xff) << ",";
    line_ << key_text{"event-id"} << ((word >> 8) & 0xff) << ",";
    line_ << key_text{"type-id"} << (word & 0xff) << ",";
    line_ << key_text{"binary-data"};
    type_id_texts.keep(word, line_.view().substr(start));
    out = line_.reserve(room);
  }
  out = write_byte_list(out, bytes);
  if (calendar && make_calendar_text(*calendar, text, *zone_)) {
    std::memcpy(out, calendar_key.data(), calendar_key.size());
    out += calendar_key.size();
    std::memcpy(out, text.chars, sizeof text.chars);
    out += text.size;
    *out++ = '\'';
  }
  *out++ = '}';
  line_.commit(out);
}

}  // namespace zol
