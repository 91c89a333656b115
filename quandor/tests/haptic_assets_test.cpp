#include "quandor/printers.h"

#include "test_record.h"

#include <algorithm>

namespace {

std::string listing(std::vector<std::uint8_t>& buffer, std::uint64_t length) {
  return stdout_of([&] { print_haptic_assets("zol-button", 0xd8, buffer.data(), length); });
}

long line_count(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

// Entry (speed, state) of the table: enable, gain, min, max, slot.
void put_asset(std::vector<std::uint8_t>& buffer, std::size_t speed, std::size_t state,
               std::uint8_t enable, std::int32_t gain, std::uint64_t min, std::int32_t slot) {
  const std::size_t entry = 400 * speed + 25 * state;
  buffer[entry] = enable;
  put(buffer, entry + 1, gain);
  put(buffer, entry + 5, min);
  put(buffer, entry + 13, min + 500);
  put(buffer, entry + 21, slot);
}

TEST(haptic_assets, length_line_then_48_named_assets_speed_outermost) {
  auto buffer = reply_buffer();
  put_asset(buffer, 0, 0, 1, 65536, 0, 3);
  put_asset(buffer, 1, 0, 0, 0x18000, 1, 0);
  put_asset(buffer, 2, 15, 2, -32768, 7, -1);
  const std::string out = listing(buffer, 1200);
  EXPECT_EQ(line_count(out), 49);
  EXPECT_TRUE(out.starts_with("Length: 1200, expected 1200\n"
                              "ASSET [Slow][SingleDown]: enable 1, slot 3, gain 1, min 0, max 500\n"
                              "ASSET [Slow][SingleUp]: enable 0, slot 0, gain 0, min 0, max 0\n"));
  EXPECT_NE(out.find("\nASSET [Slow][LongPressUp]: enable 0, slot 0, gain 0, min 0, max 0\n"
                     "ASSET [Medium][SingleDown]: enable 0, slot 0, gain 1.5, min 1, max 501\n"),
            std::string::npos);
  EXPECT_TRUE(out.ends_with(
      "\nASSET [Fast][LongPressUp]: enable 1, slot -1, gain -0.5, min 7, max 507\n"));
}

TEST(haptic_assets, short_reply_reads_zeros_and_long_reply_is_cut_to_the_table) {
  std::vector<std::uint8_t> buffer(4096, 0xff);
  EXPECT_TRUE(listing(buffer, 25).starts_with(
      "Length: 25, expected 1200\n"
      "ASSET [Slow][SingleDown]: enable 1, slot -1, gain -1.52588e-05, "
      "min 18446744073709551615, max 18446744073709551615\n"
      "ASSET [Slow][SingleUp]: enable 0, slot 0, gain 0, min 0, max 0\n"));
  const std::string out = listing(buffer, 4096);
  EXPECT_EQ(line_count(out), 49);
  EXPECT_TRUE(out.starts_with("Length: 4096, expected 1200\n"));
  EXPECT_EQ(listing(buffer, 0), "");
}

}  // namespace
