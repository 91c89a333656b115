#include "inspect/capture/press_stats.h"

#include <string_view>
#include <variant>

#include "quandor/layouts/record_layouts.h"

namespace inspect {
namespace {

// The layout's field names, and where each goes.
struct single_field {
  std::string_view name;
  std::uint64_t press_stats::*field;
};

constexpr single_field single_fields[] = {
    {"click_count", &press_stats::click_count},
    {"finger_on_timestamp", &press_stats::finger_on},
    {"finger_off_timestamp", &press_stats::finger_off},
    {"start_haptics_timestamp", &press_stats::start_haptics},
    {"latency_fd_to_down", &press_stats::latency_fd_to_down},
    {"num_gorvin_scans", &press_stats::gorvin_scans},
    {"num_lumet_scans", &press_stats::lumet_scans},
};

struct edge_field {
  std::string_view name;
  std::array<std::uint64_t, 2 * clicks_in_record> press_stats::*field;
};

constexpr edge_field edge_fields[] = {
    {"button_timestamp", &press_stats::button},
    {"play_asset_timestamp", &press_stats::asset},
    {"play_asset_latency", &press_stats::asset_latency},
};

// The layout gives the second scan as its distance from finger on.
constexpr std::string_view second_scan_delta = "second_scan_delta";

}  // namespace

press_stats read_press_stats(std::span<const std::uint8_t> record) {
  press_stats stats;
  std::uint64_t delta = 0;
  for (const layouts::named_field& f : layouts::stats_fields(record)) {
    const std::uint64_t* value = std::get_if<std::uint64_t>(&f.value);
    if (!value) continue;
    if (f.name == second_scan_delta) delta = *value;
    for (const single_field& s : single_fields)
      if (f.name == s.name) stats.*s.field = *value;
    for (const edge_field& e : edge_fields)
      if (f.name == e.name && f.index && *f.index < 2 * clicks_in_record)
        (stats.*e.field)[*f.index] = *value;
  }
  // Unsigned, wrapping both ways, so the sum is the stored time again.
  stats.second_scan = stats.finger_on + delta;
  return stats;
}

}  // namespace inspect
