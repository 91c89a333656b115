#include <cstdint>

#include "liblog_zol/category_decoders.h"
#include "liblog_zol/payload_fields.h"

namespace zol {
namespace {

// Whole type words: type id 3, component 0, category 4; event 0 or 1.
constexpr std::uint32_t data_in_word = 0x04000003;
constexpr std::uint32_t data_out_word = 0x04000103;

// Fixed-point axis samples: Q16 going in, Q12 coming out.
constexpr double data_in_scale = 1.0 / 65536;
constexpr double data_out_scale = 1.0 / 4096;

constexpr payload_field raw_words[] = {
    number_field("arg1", 16, 4, 10), number_field("arg2", 20, 4, 10),
    number_field("arg3", 24, 4, 10), number_field("arg4", 28, 4, 10),
    number_field("arg5", 32, 4, 10), number_field("arg6", 36, 4, 10),
};

// Signed fixed-point values, over the same words as arg1 to arg3.
struct axis {
  std::string_view key;
  std::uint8_t offset;
};

constexpr axis axes[] = {{"x", 16}, {"y", 20}, {"z", 24}};
constexpr std::uint8_t axis_width = 10;

void write_sample(record_printer& printer, const profile_record& record, double scale) {
  write_fields(printer, record, raw_words);
  for (const axis& a : axes) {
    const double value = static_cast<double>(record.bytes().i32(a.offset)) * scale;
    printer.field(a.key, axis_width, field_value::of_floating(value));
  }
}

}  // namespace

name_text nimbrel_decoder::component_name(std::uint32_t component) const {
  return lookup_name(nimbrel_components, component);
}

name_text nimbrel_decoder::event_name(std::uint32_t, std::uint32_t event) const {
  return lookup_name(nimbrel_events, event);
}

// Data-in falls through to the generic payload as well; data-out does not.
void nimbrel_decoder::write_payload(record_printer& printer,
                                    const profile_record& record) const {
  const std::uint32_t word = record.type_word();
  if (word == data_in_word) write_sample(printer, record, data_in_scale);
  if (word == data_out_word)
    write_sample(printer, record, data_out_scale);
  else
    profile_decoder::write_payload(printer, record);
}

}  // namespace zol
