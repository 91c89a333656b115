#include "liblog_zol/text_printer.h"

#include <algorithm>
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
  // The text kept for `word`, or null.
  const word_text* find(std::uint32_t word) const noexcept {
    const word_text& entry = entries_[slot(word)];
    return entry.valid && entry.word == word ? &entry : nullptr;
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

}  // namespace

// The item most payload fields are.
[[gnu::always_inline]] inline void text_printer::number_item(std::string_view key,
                                                              std::uint8_t width,
                                                              std::uint64_t value) {
  // The key, the number in its width and the comma in one go.
  char digits[20];
  char* const digits_end = digits + sizeof digits;
  const char* const start = decimal_ending_at(digits_end, value);
  const auto size = static_cast<std::size_t>(digits_end - start);
  const std::size_t padding = width > size ? width - size : 0;
  // The spaces go in by 16-byte copies: room for the last past the item.
  char* out = write_key(line_.reserve(key.size() + 4 + padding + size + 1 + sizeof spaces), key);
  for (std::size_t done = 0; done < padding; done += sizeof spaces)
    std::memcpy(out + done, spaces, sizeof spaces);
  out += padding;
  copy_short(out, start, size);
  out[size] = ',';
  line_.commit(out + size + 1);
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
    case value_kind::unsigned_number:
      line_ << value.number;
      break;
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
  }
  line_.put(',');
}

void text_printer::begin(const record_header& header) {
  line_.clear();
  type_word_ = header.type_word;
  const std::uint32_t names_word = header.type_word >> 8;
  if (const word_text* kept = header_texts.find(names_word)) {
    line_.append({kept->chars, kept->size});
  } else {
    const header_names names = header.names();
    line_ << "{ ";
    for (const header_name& name : header_layout) {
      line_ << key_text{name.key};
      line_.width(name.width) << quoted_text{(names.*name.item).view()} << ",";
    }
    header_texts.keep(names_word, line_.view());
  }
  number_item("timestamp", number_width, header.timestamp);
  number_item("sequence_num", number_width, header.sequence_number);
}

void text_printer::field(std::string_view key, std::uint8_t width, const field_value& value) {
  item(key, width, value);
}

// A loop of its own over the table, without a call per field.
void text_printer::fields(const profile_record& record, std::span<const payload_field> layout) {
  const byte_reader& bytes = record.bytes();
  for (const payload_field& field : layout) {
    // Numbers straight from the record: most fields are.
    if (field.form == field_form::number) {
      std::uint64_t value;
      switch (field.size) {
        case 1: value = bytes.u8(field.offset); break;
        case 2: value = bytes.u16(field.offset); break;
        case 4: value = bytes.u32(field.offset); break;
        default: value = bytes.u64(field.offset); break;
      }
      number_item(field.key, field.width, value);
    } else {
      item(field.key, field.width, payload_value(record, field));
    }
  }
}


void text_printer::end(std::span<const std::uint8_t> bytes, const std::uint64_t* calendar) {
  // "type-id" twice: first the whole word, last the type id alone.
  const std::uint32_t word = type_word_;
  if (const word_text* kept = type_id_texts.find(word)) {
    line_.append({kept->chars, kept->size});
  } else {
    const std::size_t start = line_.view().size();
    line_ << key_text{"type-id"} << word << ",";
    line_ << key_text{"category-id"} << (word >> 24) << ",";
    line_ << key_text{"component-id"} << ((word >> 16) & 0xff) << ",";
    line_ << key_text{"event-id"} << ((word >> 8) & 0xff) << ",";
    line_ << key_text{"type-id"} << (word & 0xff) << ",";
    line_ << key_text{"binary-data"};
    type_id_texts.keep(word, line_.view().substr(start));
  }
  line_ << byte_list{bytes};
  calendar_text text;
  if (calendar && make_calendar_text(*calendar, text))
    line_ << "," << key_text{"calendar-time"} << quoted_text{text.view()};
  line_ << "}";
}

}  // namespace zol
