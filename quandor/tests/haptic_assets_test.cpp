#include "quandor/printers.h"

#include "test_record.h"

#include <sstream>

namespace {

std::vector<std::string> lines_of(std::vector<std::uint8_t>& buffer, std::uint64_t length) {
  std::istringstream out(
      stdout_of([&] { print_haptic_assets("zol-button", 0xd8, buffer.data(), length); }));
  std::vector<std::string> lines;
  for (std::string line; std::getline(out, line);) lines.push_back(line);
  return lines;
}

void put_asset(std::vector<std::uint8_t>& buffer, std::size_t entry, std::uint8_t enable,
               std::int32_t gain, std::uint64_t min, std::uint64_t max, std::int32_t slot) {
  buffer[entry] = enable;
  put(buffer, entry + 1, gain);
  put(buffer, entry + 5, min);
  put(buffer, entry + 13, max);
  put(buffer, entry + 21, slot);
}

TEST(haptic_assets, length_line_then_48_named_assets_speed_outermost) {
  auto buffer = reply_buffer();
  put_asset(buffer, 0, 1, 65536, 0, 500, 3);
  put_asset(buffer, 400, 0, 0x18000, 1, 2, 0);
  put_asset(buffer, 800 + 15 * 25, 2, -32768, 7, 9, -1);
  const auto lines = lines_of(buffer, 1200);
  ASSERT_EQ(lines.size(), 49u);
  EXPECT_EQ(lines[0], "Length: 1200, expected 1200");
  EXPECT_EQ(lines[1], "ASSET [Slow][SingleDown]: enable 1, slot 3, gain 1, min 0, max 500");
  EXPECT_EQ(lines[2], "ASSET [Slow][SingleUp]: enable 0, slot 0, gain 0, min 0, max 0");
  EXPECT_EQ(lines[17], "ASSET [Medium][SingleDown]: enable 0, slot 0, gain 1.5, min 1, max 2");
  EXPECT_EQ(lines[48], "ASSET [Fast][LongPressUp]: enable 1, slot -1, gain -0.5, min 7, max 9");
}

TEST(haptic_assets, short_reply_reads_zeros_and_long_reply_is_cut_to_the_table) {
  auto buffer = reply_buffer();
  std::fill(buffer.begin(), buffer.end(), 0xff);
  auto lines = lines_of(buffer, 25);
  EXPECT_EQ(lines[0], "Length: 25, expected 1200");
  EXPECT_EQ(lines[1], "ASSET [Slow][SingleDown]: enable 1, slot -1, gain -1.52588e-05, "
                      "min 18446744073709551615, max 18446744073709551615");
  EXPECT_EQ(lines[2], "ASSET [Slow][SingleUp]: enable 0, slot 0, gain 0, min 0, max 0");
  lines = lines_of(buffer, 4096);
  EXPECT_EQ(lines.size(), 49u);
  EXPECT_EQ(lines[0], "Length: 4096, expected 1200");
  EXPECT_EQ(lines_of(buffer, 0).size(), 0u);
}

}  // namespace
