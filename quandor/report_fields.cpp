#include "quandor/report_fields.h"

#include <iostream>

std::string padded_label(std::string_view caption, std::size_t width,
                         std::string_view tail) {
  std::string label(caption);
  if (label.size() < width) label.append(width - label.size(), ' ');
  label += tail;
  return label;
}

void print_counters(const byte_reader& record,
                    std::span<const counter_field> fields, std::size_t width,
                    std::string_view tail) {
  for (const counter_field& field : fields) {
    std::cout << padded_label(field.caption, width, tail);
    if (field.is_signed)
      std::cout << record.i32(field.offset);
    else
      std::cout << record.u32(field.offset);
    std::cout << std::endl;
  }
}
