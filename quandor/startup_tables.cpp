#include "quandor/startup_tables.h"

#include "quandor/printers.h"

#include <span>
#include <string_view>

#include "quandor/layouts/record_layouts.h"

namespace {

// Later rows replace earlier ones for the commands they share.
struct registry_row {
  std::uint32_t first;
  std::uint32_t last;
  dump_fn printer;
};

constexpr registry_row registry_rows[] = {
    {0xd0, 0xed, print_state_dump},
    {0xe3, 0xe3, print_input_report_errors},
    {0x45, 0x45, print_transfer_errors},
};

std::map<std::uint32_t, dump_fn> build_dump_registry() {
  std::map<std::uint32_t, dump_fn> registry;
  for (const registry_row& row : registry_rows) {
    for (std::uint32_t command = row.first; command <= row.last; ++command)
      registry[command] = row.printer;
  }
  return registry;
}

// Code i names names[i]; each pair is inserted at the end, in code order.
std::map<std::uint32_t, std::string> numbered(std::span<const std::string_view> names) {
  std::map<std::uint32_t, std::string> table;
  for (std::uint32_t code = 0; code < names.size(); ++code)
    table.emplace_hint(table.end(), code, names[code]);
  return table;
}

}  // namespace

// Kept together and in this order: within one translation unit they are
// built top to bottom and destroyed bottom to top.
std::string hex_prefix = "0x";
std::string dec_prefix = "0d";
std::map<std::uint32_t, dump_fn> dump_registry = build_dump_registry();
std::map<std::uint32_t, std::string> click_speed_names = numbered(layouts::click_speeds);
std::map<std::uint32_t, std::string> button_state_names = numbered(layouts::button_states);
