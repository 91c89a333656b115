#include "kelvra/collector.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "kelvra/step_output.h"
#include "quandor/layouts/harvest_requests.h"
#include "quandor/printers.h"
#include "quandor/profile_retrieval.h"
#include "quandor/service.h"
#include "quandor/startup_tables.h"

namespace {

constexpr unsigned profile_decoded = 1;

using layouts::harvest_request;
using layouts::request_row;

// A printer is given no more than the buffer holds, whatever the driver says.
std::uint64_t printable(std::span<const std::uint8_t> buffer, std::size_t length) {
  return std::min(length, buffer.size());
}

// One request into a fresh buffer of its capacity; on success its banner,
// then its printer.
template <layouts::request id>
void button_report(dump_fn printer) {
  constexpr const harvest_request& request = request_row(id);
  std::array<std::uint8_t, request.capacity> buffer{};
  std::size_t length = buffer.size();
  const std::string service(request.service);
  const kern_return_t kr =
      call_command(service, request.command, buffer.data(), &length);
  if (kr != KERN_SUCCESS) {
    kelvra_bail(request.step_failure, kr);
    return;
  }
  write_banner(request.banner);
  printer(service.c_str(), request.command, buffer.data(),
          printable(buffer, length));
}

}  // namespace

void get_stats() {
  button_report<layouts::request::stats>(print_pkey_stats);
}

void dump_states() {
  constexpr auto requests = layouts::step_requests(layouts::harvest_step::state_dumps);
  std::array<std::uint8_t, requests.front().capacity> buffer{};
  // Set once: each request is offered what the previous one delivered.
  std::size_t length = buffer.size();
  for (const harvest_request& request : requests) {
    write_banner(request.banner);
    const std::string service(request.service);
    const kern_return_t kr = call_command(service, request.command,
                                          buffer.data(), &length);
    if (kr != KERN_SUCCESS) {
      kelvra_bail(request.step_failure, kr);
      return;
    }
    if (const dump_fn printer = dump_registry[request.command])
      printer(service.c_str(), request.command, buffer.data(),
              printable(buffer, length));
  }
}

void dump_profile() {
  write_banner(request_row(layouts::request::profile_events).banner);
  read_profile_events(profile_decoded);
  drain_zol_profile(profile_decoded);
}

void get_assets() {
  button_report<layouts::request::assets>(print_haptic_assets);
}

void harvest() {
  get_stats();
  dump_states();
  dump_profile();
  get_assets();
  dump_hid_reports();
}
