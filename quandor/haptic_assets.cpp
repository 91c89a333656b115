#include "quandor/printers.h"

#include <algorithm>
#include <iostream>

#include "quandor/layouts/record_layouts.h"

void print_haptic_assets(const std::string&, std::uint32_t, std::uint8_t* buffer,
                         std::uint64_t length) {
  if (buffer == nullptr || length == 0) return;
  // A long reply is cut to the table.
  const auto table = std::min<std::uint64_t>(length, layouts::assets_size);
  layouts::write_assets(std::cout, length, std::span(buffer, static_cast<std::size_t>(table)));
}
