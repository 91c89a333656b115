#include "quandor/hexdump.h"
#include "quandor/printers.h"

#include <algorithm>
#include <iostream>

#include "quandor/layouts/record_layouts.h"

namespace {

constexpr std::uint32_t dump_state = 0xd0;
constexpr std::uint32_t dump_enable_counts = 0xd1;
constexpr std::uint32_t get_stats = 0xd7;
constexpr std::uint32_t get_assets = 0xd8;

bool is_power_state_service(const std::string& service) {
  return std::find(std::begin(layouts::power_state_services),
                   std::end(layouts::power_state_services),
                   service) != std::end(layouts::power_state_services);
}

// Printers read whole records at fixed offsets, whatever `length` says.
std::span<const std::uint8_t> record_at(const std::uint8_t* buffer, std::size_t size) {
  return {buffer, size};
}

}  // namespace

void print_state_dump(const std::string& service, std::uint32_t command,
                      std::uint8_t* buffer, std::uint64_t length) {
  if (buffer == nullptr || length == 0) return;
  if (service == "varsium") {
    layouts::write_scan_state(std::cout, record_at(buffer, layouts::scan_state_size));
  } else if (service == "zol-button") {
    if (command == get_stats) {
      print_pkey_stats(service, command, buffer, length);
    } else if (command == dump_state || command == dump_enable_counts) {
      layouts::write_counts(std::cout, command, record_at(buffer, layouts::counts_size));
    } else if (command == get_assets) {
      print_haptic_assets(service, command, buffer, length);
    } else {
      hexdump(buffer, length, nullptr);
    }
  } else if (is_power_state_service(service) && command == dump_state) {
    layouts::write_power_state(std::cout, service,
                               record_at(buffer, layouts::power_state_size));
  } else if (service == "mux" && command == dump_state) {
    const auto whole_entries = static_cast<std::size_t>(length - length % layouts::sample_size);
    layouts::write_samples(std::cout, record_at(buffer, whole_entries));
  } else {
    hexdump(buffer, length, nullptr);
  }
}
