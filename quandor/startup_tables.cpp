#include "quandor/startup_tables.h"

#include "quandor/printers.h"

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

}  // namespace

// Kept together and in this order: within one translation unit they are
// built top to bottom and destroyed bottom to top.
std::string hex_prefix = "0x";
std::string dec_prefix = "0d";
std::map<std::uint32_t, dump_fn> dump_registry = build_dump_registry();
std::map<std::uint32_t, std::string> click_speed_names = {
    {0, "Slow"},
    {1, "Medium"},
    {2, "Fast"},
};
std::map<std::uint32_t, std::string> button_state_names = {
    {0, "SingleDown"},   {1, "SingleUp"},      {2, "DoubleDown"},
    {3, "DoubleUp"},     {4, "TripleDown"},    {5, "TripleUp"},
    {6, "SingleTapOn"},  {7, "SingleTapOff"},  {8, "DoubleTapOn"},
    {9, "DoubleTapOff"}, {10, "TripleTapOn"},  {11, "TripleTapOff"},
    {12, "DeepDown"},    {13, "DeepUp"},       {14, "LongPress"},
    {15, "LongPressUp"},
};
