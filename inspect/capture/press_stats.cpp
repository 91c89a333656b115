#include "inspect/capture/press_stats.h"

#include <variant>

#include "quandor/layouts/record_layouts.h"

namespace inspect {

press_stats read_press_stats(std::span<const std::uint8_t> record) {
  using layouts::field_role;
  press_stats stats;
  std::uint64_t delta = 0;
  for (const layouts::named_field& f : layouts::stats_fields(record)) {
    const std::uint64_t* value = std::get_if<std::uint64_t>(&f.value);
    if (!value) continue;
    const std::size_t edge = f.index.value_or(0);
    const bool in_record = edge < 2 * clicks_in_record;
    switch (f.role) {
      case field_role::click_count: stats.click_count = *value; break;
      case field_role::finger_on: stats.finger_on = *value; break;
      case field_role::finger_off: stats.finger_off = *value; break;
      case field_role::start_haptics: stats.start_haptics = *value; break;
      case field_role::finger_to_down_latency: stats.latency_fd_to_down = *value; break;
      case field_role::button_edge: if (in_record) stats.button[edge] = *value; break;
      case field_role::asset_edge: if (in_record) stats.asset[edge] = *value; break;
      case field_role::asset_latency: if (in_record) stats.asset_latency[edge] = *value; break;
      case field_role::second_scan_delta: delta = *value; break;
      case field_role::gorvin_scans: stats.gorvin_scans = *value; break;
      case field_role::lumet_scans: stats.lumet_scans = *value; break;
      case field_role::none: break;
    }
  }
  // Unsigned, wrapping both ways, so the sum is the stored time again.
  stats.second_scan = stats.finger_on + delta;
  return stats;
}

}  // namespace inspect
