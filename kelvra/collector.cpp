#include "kelvra/collector.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "kelvra/harvest_texts.h"
#include "kelvra/step_output.h"
#include "quandor/printers.h"
#include "quandor/profile_retrieval.h"
#include "quandor/service.h"
#include "quandor/startup_tables.h"

namespace {

constexpr const char* button_service = "zol-button";
constexpr const char* request_failed = "kr == 0 ";

constexpr std::uint32_t stats_command = 215;
constexpr std::uint32_t assets_command = 216;
constexpr unsigned profile_decoded = 1;

using namespace harvest_texts;

// A printer is given no more than the buffer holds, whatever the driver says.
std::uint64_t printable(std::span<const std::uint8_t> buffer, std::size_t length) {
  return std::min(length, buffer.size());
}

// One button request into a fresh buffer of `capacity` bytes; on success its
// banner, then its printer.
template <std::size_t capacity>
void button_report(std::uint32_t command, std::int64_t failure_line,
                   std::string_view banner, dump_fn printer) {
  std::array<std::uint8_t, capacity> buffer{};
  std::size_t length = buffer.size();
  const kern_return_t kr =
      call_command(button_service, command, buffer.data(), &length);
  if (kr != KERN_SUCCESS) {
    kelvra_bail(request_failed, failure_line, kr);
    return;
  }
  write_banner(banner);
  printer(button_service, command, buffer.data(), printable(buffer, length));
}

}  // namespace

void get_stats() {
  button_report<2000>(stats_command, line_stats_failed, stats_banner,
                      print_pkey_stats);
}

void dump_states() {
  std::array<std::uint8_t, 4096> buffer{};
  // Set once: each request is offered what the previous one delivered.
  std::size_t length = buffer.size();
  for (const state_request& request : state_requests) {
    write_banner(request.banner);
    const kern_return_t kr = call_command(request.service, request.command,
                                          buffer.data(), &length);
    if (kr != KERN_SUCCESS) {
      kelvra_bail(request_failed, request.failure_line, kr);
      return;
    }
    if (const dump_fn printer = dump_registry[request.command])
      printer(request.service, request.command, buffer.data(),
              printable(buffer, length));
  }
}

void dump_profile() {
  write_banner(profile_banner);
  read_profile_events(profile_decoded);
  drain_zol_profile(profile_decoded);
}

void get_assets() {
  button_report<4096>(assets_command, line_assets_failed, assets_banner,
                      print_haptic_assets);
}

void harvest() {
  get_stats();
  dump_states();
  dump_profile();
  get_assets();
  dump_hid_reports();
}
