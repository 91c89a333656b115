#include "quandor/printers.h"

#include <iostream>

#include "quandor/layouts/record_layouts.h"

void print_pkey_stats(const std::string&, std::uint32_t, std::uint8_t* buffer,
                      std::uint64_t length) {
  if (buffer == nullptr || length == 0) return;
  // The reply buffer always holds a whole record, whatever was delivered.
  layouts::write_stats(std::cout, std::span(buffer, layouts::stats_size));
}
