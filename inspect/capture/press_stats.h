#pragma once

// The statistics record of the last press, in the named fields of its
// layout (quandor/layouts). All times are coprocessor microseconds.

#include <array>
#include <cstdint>
#include <span>

namespace inspect {

inline constexpr std::size_t clicks_in_record = 3;

struct press_stats {
  std::uint64_t finger_on = 0;
  std::uint64_t finger_off = 0;
  std::uint64_t start_haptics = 0;
  std::uint64_t latency_fd_to_down = 0;
  // Index 2k: button down of click k; 2k + 1: its button up.
  std::array<std::uint64_t, 2 * clicks_in_record> button{};
  std::array<std::uint64_t, 2 * clicks_in_record> asset{};
  std::array<std::uint64_t, 2 * clicks_in_record> asset_latency{};
  std::uint64_t click_count = 0;
  std::uint64_t second_scan = 0;
  std::uint64_t gorvin_scans = 0;
  std::uint64_t lumet_scans = 0;
};

// Fields past the end of `record` read as zero.
press_stats read_press_stats(std::span<const std::uint8_t> record);

}  // namespace inspect
