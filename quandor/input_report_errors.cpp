#include "quandor/printers.h"

#include <iostream>

#include "quandor/layouts/record_layouts.h"

void print_input_report_errors(const std::string& service, std::uint32_t,
                               std::uint8_t* buffer, std::uint64_t length) {
  if (buffer == nullptr || length == 0) return;
  layouts::write_input_report_errors(
      std::cout, service, std::span(buffer, layouts::input_report_errors_size));
}
