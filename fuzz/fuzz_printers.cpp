// Every report printer over any reply: the registry's printers, the
// statistics and the asset listing, each given the buffer its real caller
// owns, so reading past that buffer is a finding.
//
// Input: command (u32 LE), service choice (u8), length (u16 LE); for the
// free-form service choice, a name length (u8) and the name; then the reply.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "quandor/printers.h"
#include "quandor/startup_tables.h"

namespace {

constexpr const char* known_services[] = {"varsium", "zol-button", "lyn", "btmspk", "mux"};
constexpr std::uint32_t stats_command = 215;
constexpr std::uint32_t assets_command = 216;
constexpr std::size_t stats_buffer_size = 2000;
constexpr std::size_t report_buffer_size = 4096;

// The command, its printer as the collector finds it and its buffer size.
// Commands without a printer are mapped onto the registry's entries so that
// no input is wasted.
std::tuple<std::uint32_t, dump_fn, std::size_t> choose_printer(std::uint32_t command) {
  if (command == stats_command) return {command, print_pkey_stats, stats_buffer_size};
  if (command == assets_command) return {command, print_haptic_assets, report_buffer_size};
  if (!dump_registry.contains(command))
    command = std::next(dump_registry.begin(), command % dump_registry.size())->first;
  return {command, dump_registry.at(command), report_buffer_size};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span<const std::uint8_t> input(data, size);
  // Little-endian; missing bytes read as zero.
  const auto number = [&input](std::size_t bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes && !input.empty(); ++i, input = input.subspan(1))
      value |= std::uint64_t{input.front()} << (8 * i);
    return value;
  };
  const auto [command, printer, buffer_size] =
      choose_printer(static_cast<std::uint32_t>(number(4)));
  const std::size_t service_choice = number(1) % (std::size(known_services) + 1);
  const std::size_t length = number(2) % (buffer_size + 1);
  const auto take = [&input](std::uint64_t wanted) {
    const auto taken = input.first(std::min<std::uint64_t>(wanted, input.size()));
    input = input.subspan(taken.size());
    return std::string(taken.begin(), taken.end());
  };
  const std::string service = service_choice < std::size(known_services)
                                  ? std::string(known_services[service_choice])
                                  : take(number(1));
  // Exactly the caller's size, so that one byte past it is out of bounds.
  std::vector<std::uint8_t> buffer(buffer_size);
  std::copy_n(input.begin(), std::min(input.size(), buffer.size()), buffer.begin());
  printer(service, command, buffer.data(), length);
  return 0;
}
