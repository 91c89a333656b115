// Report fields: print order, snake_case names, the values as printed and
// the raw words of scaled ones.

#include <gtest/gtest.h>

#include <cstdint>

#include "printed_block.h"

namespace {

using layouts::field_value;
using layouts::named_field;

struct expected_field {
  std::string_view name;
  field_value value;
  std::optional<std::size_t> index = std::nullopt;
};

void expect_fields(const std::vector<named_field>& fields, std::span<const expected_field> want,
                   std::size_t first = 0) {
  ASSERT_GE(fields.size(), first + want.size());
  for (std::size_t i = 0; i < want.size(); ++i) {
    const named_field& got = fields[first + i];
    EXPECT_EQ(got.name, want[i].name) << i;
    EXPECT_EQ(got.value, want[i].value) << want[i].name;
    EXPECT_EQ(got.index, want[i].index) << want[i].name;
  }
}

constexpr std::uint64_t u(std::uint64_t value) { return value; }

TEST(fields, statistics_in_print_order_with_edge_indices_and_the_wrapped_delta) {
  bytes record(layouts::stats_size);
  for (std::uint64_t field = 0; field < 4; ++field) put(record, 8 * field, 1000 * (field + 1));
  for (std::uint64_t block = 0; block < 3; ++block)
    for (std::uint64_t edge = 0; edge < 6; ++edge)
      put(record, 88 + 48 * block + 8 * edge, 100 * (block + 1) + edge);
  put<std::uint32_t>(record, 233, 7);
  put<std::uint64_t>(record, 266, 995);
  put<std::uint32_t>(record, 274, 0x01020304);
  put<std::uint32_t>(record, 278, 5);
  std::vector<expected_field> want = {
      {"click_count", u(3)},
      {"finger_on_timestamp", u(1000)},
      {"start_haptics_timestamp", u(3000)},
      {"latency_fd_to_down", u(4000)},
  };
  // Click k shows edge 2k (down), then 2k + 1 (up).
  for (std::size_t edge = 0; edge < 6; ++edge) {
    want.push_back({"play_asset_latency", u(300 + edge), edge});
    want.push_back({"button_timestamp", u(100 + edge), edge});
    want.push_back({"play_asset_timestamp", u(200 + edge), edge});
  }
  want.insert(want.end(), {{"second_scan_delta", u(18446744073709551611u)},
                           {"num_gorvin_scans", u(16909060)},
                           {"num_lumet_scans", u(5)},
                           {"finger_off_timestamp", u(2000)}});
  const auto fields = layouts::stats_fields(record);
  EXPECT_EQ(fields.size(), want.size());
  expect_fields(fields, want);
}

TEST(fields, state_dumps_name_every_printed_value) {
  bytes scan(layouts::scan_state_size);
  put<std::int32_t>(scan, 0, -32768);
  put<std::uint32_t>(scan, 24, 3);
  put<std::uint32_t>(scan, 32, 1);
  put<std::uint32_t>(scan, 36, 5);
  const expected_field scan_fields[] = {
      {"scan_state", u(0)},
      {"next_scan_in", 2.56},
      {"next_scan_ticks", u(1)},
      {"num_lofi_reads", u(3)},
      {"num_frames_since_on_wrist", u(0)},
      {"num_lofi_scans_accepted", u(5)},
      {"num_lofi_scans_rejected", u(4294967294)},
      {"wait_num_frames_after_success", u(0)},
      {"motion_trigger_num_frames", u(0)},
      {"accel_var_threshold", -0.5},
      {"accel_var_threshold_raw", std::int64_t{-32768}},
  };
  expect_fields(layouts::scan_state_fields(scan), scan_fields);

  const bytes counts = {7, 11, 0, 0, 0, 0, 0, 1, 0};
  const expected_field count_fields[] = {
      {"enable", u(1)}, {"ap_ref", u(65536)}, {"zol_ref", u(11)}};
  expect_fields(layouts::counts_fields(counts), count_fields);

  bytes samples(25);
  put<std::uint32_t>(samples, 20, 0x1ab);
  put<std::uint64_t>(samples, 12, 7);
  const expected_field sample_fields[] = {
      {"data", u(0), 0}, {"timestamp", u(0), 0}, {"data", u(0x1ab), 1}, {"timestamp", u(7), 1}};
  const auto listed = layouts::samples_fields(samples);
  EXPECT_EQ(listed.size(), std::size(sample_fields));
  expect_fields(listed, sample_fields);
}

TEST(fields, each_asset_entry_named_by_speed_and_state) {
  bytes table(layouts::assets_size);
  const std::size_t last = 25 * 47;
  table[last] = 2;
  put<std::int32_t>(table, last + 1, -32768);
  put<std::uint64_t>(table, last + 5, 7);
  put<std::uint64_t>(table, last + 13, 507);
  put<std::int32_t>(table, last + 21, -1);
  put<std::int32_t>(table, 25 * 16 + 1, 0x18000);
  const auto fields = layouts::assets_fields(table);
  ASSERT_EQ(fields.size(), 48u * 8);
  const expected_field medium_single_down[] = {
      {"speed", std::string_view("Medium"), 16}, {"state", std::string_view("SingleDown"), 16},
      {"enable", u(0), 16},   {"slot", std::int64_t{0}, 16},
      {"gain", 1.5, 16},      {"gain_raw", std::int64_t{0x18000}, 16},
      {"min", u(0), 16},      {"max", u(0), 16},
  };
  expect_fields(fields, medium_single_down, 8 * 16);
  const expected_field fast_long_press_up[] = {
      {"speed", std::string_view("Fast"), 47}, {"state", std::string_view("LongPressUp"), 47},
      {"enable", u(1), 47},   {"slot", std::int64_t{-1}, 47},
      {"gain", -0.5, 47},     {"gain_raw", std::int64_t{-32768}, 47},
      {"min", u(7), 47},      {"max", u(507), 47},
  };
  expect_fields(fields, fast_long_press_up, 8 * 47);
}

}  // namespace
