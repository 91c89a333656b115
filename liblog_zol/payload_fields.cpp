#include "liblog_zol/payload_fields.h"

#include <algorithm>

namespace zol {
namespace {

std::uint64_t unsigned_at(const byte_reader& bytes, std::size_t offset, std::size_t size) {
  switch (size) {
    case 1: return bytes.u8(offset);
    case 2: return bytes.u16(offset);
    case 4: return bytes.u32(offset);
    default: return bytes.u64(offset);
  }
}

field_value value_of(const profile_record& record, const payload_field& field) {
  const byte_reader& bytes = record.bytes();
  switch (field.form) {
    case field_form::number:
      return field_value::of_unsigned(unsigned_at(bytes, field.offset, field.size));
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
      if (field.count_at) count = std::min<std::size_t>(count, bytes.u16(field.count_at));
      return field_value::of_bytes(bytes.bytes(field.offset, count));
    }
  }
  return field_value::of_unsigned(0);
}

}  // namespace

void write_fields(record_printer& printer, const profile_record& record,
                  std::span<const payload_field> fields) {
  for (const payload_field& field : fields)
    printer.field(field.key, field.width, value_of(record, field));
}

}  // namespace zol
