#include "liblog_zol/payload_fields.h"

#include <algorithm>

#include "liblog_zol/text_shapes.h"

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

void write_value(line_builder& stream, const profile_record& record,
                 const payload_field& field) {
  const byte_reader& bytes = record.bytes();
  switch (field.form) {
    case field_form::number:
      stream << unsigned_at(bytes, field.offset, field.size);
      return;
    case field_form::constant:
      stream << field.value;
      return;
    case field_form::hex:
      stream << "'";
      stream.hex() << bytes.u32(field.offset);
      stream.dec() << "'";
      return;
    case field_form::text: {
      // Up to the first zero; a field without one gives all its characters.
      const auto chars = bytes.bytes(field.offset, field.size);
      const std::string_view all(reinterpret_cast<const char*>(chars.data()), chars.size());
      stream << quoted_text{all.substr(0, all.find('\0'))};
      return;
    }
    case field_form::bytes: {
      std::size_t count = field.size;
      if (field.count_at) count = std::min<std::size_t>(count, bytes.u16(field.count_at));
      stream << byte_list{bytes.bytes(field.offset, count)};
      return;
    }
  }
}

}  // namespace

void write_fields(line_builder& stream, const profile_record& record,
                  std::span<const payload_field> fields) {
  for (const payload_field& field : fields) {
    stream << key_text{field.key};
    stream.width(field.width);
    write_value(stream, record, field);
    stream << ",";
  }
}

}  // namespace zol
