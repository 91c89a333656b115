// Every report printer over any reply: the registry's printers, the
// statistics and the asset listing, each given the buffer its real caller
// owns, so reading past that buffer is a finding.
//
// Input: command (u32 LE), service choice (u8), length (u16 LE); for the
// free-form service choice, a name length (u8) and the name; then the reply.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/quiet_output.h"
#include "quandor/printers.h"
#include "quandor/startup_tables.h"

namespace {

constexpr std::array<const char*, 5> known_services = {"varsium", "zol-button", "lyn",
                                                       "btmspk", "mux"};
constexpr std::uint32_t stats_command = 215;
constexpr std::uint32_t assets_command = 216;
constexpr std::size_t stats_buffer_size = 2000;
constexpr std::size_t report_buffer_size = 4096;

class input_reader {
 public:
  explicit input_reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::uint64_t number(std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size && !bytes_.empty(); ++i) {
      value |= std::uint64_t{bytes_.front()} << (8 * i);
      bytes_ = bytes_.subspan(1);
    }
    return value;
  }

  std::span<const std::uint8_t> take(std::size_t size) {
    const auto taken = bytes_.first(std::min(size, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }

  std::span<const std::uint8_t> rest() const { return bytes_; }

 private:
  std::span<const std::uint8_t> bytes_;
};

// The printer for a command, as the collector finds it; commands without one
// are mapped onto the registry's entries so that no input is wasted.
struct chosen_printer {
  std::uint32_t command;
  dump_fn printer;
  std::size_t buffer_size;
};

chosen_printer choose_printer(std::uint32_t command) {
  if (command == stats_command) return {command, print_pkey_stats, stats_buffer_size};
  if (command == assets_command) return {command, print_haptic_assets, report_buffer_size};
  static const auto filled = [] {
    std::vector<std::pair<std::uint32_t, dump_fn>> rows;
    for (const auto& [key, printer] : dump_registry)
      if (printer != nullptr) rows.emplace_back(key, printer);
    return rows;
  }();
  const auto found = dump_registry.find(command);
  if (found != dump_registry.end() && found->second != nullptr)
    return {command, found->second, report_buffer_size};
  const auto& [key, printer] = filled[command % filled.size()];
  return {key, printer, report_buffer_size};
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  silence_reports();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input_reader input({data, size});
  const chosen_printer chosen = choose_printer(static_cast<std::uint32_t>(input.number(4)));
  const std::size_t service_choice = input.number(1) % (known_services.size() + 1);
  const std::size_t length = input.number(2) % (chosen.buffer_size + 1);
  std::string service;
  if (service_choice < known_services.size()) {
    service = known_services[service_choice];
  } else {
    const auto name = input.take(input.number(1));
    service.assign(name.begin(), name.end());
  }
  // Exactly the caller's size, so that one byte past it is out of bounds.
  std::vector<std::uint8_t> buffer(chosen.buffer_size);
  const auto reply = input.rest().first(std::min(input.rest().size(), buffer.size()));
  std::copy(reply.begin(), reply.end(), buffer.begin());
  chosen.printer(service, chosen.command, buffer.data(), length);
  return 0;
}
