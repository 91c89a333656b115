#include "quandor/printers.h"
#include "quandor/report_fields.h"

#include <array>
#include <iostream>

namespace {

constexpr std::size_t pkey_stats_size = 282;
constexpr std::size_t label_width = 58;
constexpr std::size_t edges = 6;  // down and up of three clicks
constexpr std::size_t clicks = edges / 2;

struct pkey_stats {
  std::uint64_t finger_on_timestamp;
  std::uint64_t finger_off_timestamp;
  std::uint64_t start_haptics_timestamp;
  std::uint64_t latency_fd_to_down;
  std::array<std::uint64_t, edges> button_timestamp;
  std::array<std::uint64_t, edges> play_asset_timestamp;
  std::array<std::uint64_t, edges> play_asset_latency;
  std::uint32_t click_flags;  // bit 0 is not part of the count
  std::uint64_t second_scan_timestamp;
  std::uint32_t num_gorvin_scans;
  std::uint32_t num_lumet_scans;
};

pkey_stats decode_pkey_stats(const byte_reader& record) {
  pkey_stats stats{};
  stats.finger_on_timestamp = record.u64(0);
  stats.finger_off_timestamp = record.u64(8);
  stats.start_haptics_timestamp = record.u64(16);
  stats.latency_fd_to_down = record.u64(24);
  for (std::size_t edge = 0; edge < edges; ++edge) {
    stats.button_timestamp[edge] = record.u64(88 + 8 * edge);
    stats.play_asset_timestamp[edge] = record.u64(136 + 8 * edge);
    stats.play_asset_latency[edge] = record.u64(184 + 8 * edge);
  }
  stats.click_flags = record.u32(233);
  stats.second_scan_timestamp = record.u64(266);
  stats.num_gorvin_scans = record.u32(274);
  stats.num_lumet_scans = record.u32(278);
  return stats;
}

struct stat_line {
  std::string_view caption;
  std::uint64_t value;
  bool microseconds;
};

void print_stat_lines(std::span<const stat_line> lines) {
  for (const stat_line& line : lines) {
    std::cout << padded_label(line.caption, label_width, ": ") << line.value
              << (line.microseconds ? " us" : "") << std::endl;
  }
}

}  // namespace

void print_pkey_stats(const std::string&, std::uint32_t, std::uint8_t* buffer,
                      std::uint64_t length) {
  if (buffer == nullptr || length == 0) return;
  // The reply buffer always holds a whole record, whatever was delivered.
  const pkey_stats stats = decode_pkey_stats(byte_reader(buffer, pkey_stats_size));

  std::cout << "pkey_stats" << std::endl;
  std::cout << "-- Last Button Press --" << std::endl;
  const stat_line press[] = {
      {"Click Count", stats.click_flags >> 1, false},
      {"Finger ON Timestamp", stats.finger_on_timestamp, true},
      {"Start Haptics Timestamp", stats.start_haptics_timestamp, true},
      {"Latency - Finger Detect to Button Down", stats.latency_fd_to_down, true},
  };
  print_stat_lines(press);

  // All three blocks, whatever the click count says.
  for (std::size_t click = 0; click < clicks; ++click) {
    const std::size_t down = 2 * click;
    const std::size_t up = down + 1;
    std::cout << "--Click " << static_cast<int>(click) + 1 << "--" << std::endl;
    const stat_line edges_of_click[] = {
        {"Latency   - Button Down to Play Asset", stats.play_asset_latency[down], true},
        {"Timestamp - Button Down", stats.button_timestamp[down], true},
        {"Timestamp - Button Down Play Asset", stats.play_asset_timestamp[down], true},
        {"Latency   - Button Up to Play Asset", stats.play_asset_latency[up], true},
        {"Timestamp - Button Up", stats.button_timestamp[up], true},
        {"Timestamp - Button Up Play Asset", stats.play_asset_timestamp[up], true},
    };
    print_stat_lines(edges_of_click);
  }

  const stat_line scans[] = {
      // Unsigned: a second scan before finger-on wraps, and is shown so.
      {"Second scan delta from FD",
       stats.second_scan_timestamp - stats.finger_on_timestamp, true},
      {"Num Gorvin Scans", stats.num_gorvin_scans, false},
      {"Num Lumet Scans", stats.num_lumet_scans, false},
      {"Finger OFF Timestamp", stats.finger_off_timestamp, true},
  };
  print_stat_lines(scans);
  std::cout << "\n\n" << std::endl;
}
