#include "quandor/printers.h"
#include "quandor/report_fields.h"
#include "quandor/startup_tables.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>

namespace {

constexpr std::size_t asset_table_size = 1200;
constexpr std::uint32_t click_speeds = 3;
constexpr std::uint32_t button_states = 16;
constexpr std::size_t speed_group_size = 400;
constexpr std::size_t asset_entry_size = 25;

struct haptic_asset {
  bool enable;
  std::int32_t gain;  // 16 fractional bits
  std::uint64_t min;
  std::uint64_t max;
  std::int32_t slot;
};

haptic_asset decode_asset(const byte_reader& table, std::size_t entry) {
  return {table.u8(entry) != 0, table.i32(entry + 1), table.u64(entry + 5),
          table.u64(entry + 13), table.i32(entry + 21)};
}

}  // namespace

void print_haptic_assets(const std::string&, std::uint32_t, std::uint8_t* buffer,
                         std::uint64_t length) {
  if (buffer == nullptr || length == 0) return;
  std::cout << "Length: " << length << ", expected " << asset_table_size << std::endl;

  // A short reply leaves zeros behind it; a long one is cut to the table.
  std::array<std::uint8_t, asset_table_size> copy{};
  std::memcpy(copy.data(), buffer,
              static_cast<std::size_t>(std::min<std::uint64_t>(length, copy.size())));
  const byte_reader table(copy.data(), copy.size());

  for (std::uint32_t speed = 0; speed < click_speeds; ++speed) {
    for (std::uint32_t state = 0; state < button_states; ++state) {
      const haptic_asset asset =
          decode_asset(table, speed * speed_group_size + state * asset_entry_size);
      std::cout << "ASSET [" << click_speed_names[speed] << "]["
                << button_state_names[state] << "]: enable " << asset.enable
                << ", slot " << asset.slot << ", gain "
                << static_cast<double>(asset.gain) * fixed_point_scale << ", min "
                << asset.min << ", max " << asset.max << std::endl;
    }
  }
}
