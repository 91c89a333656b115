#include "quandor/hexdump.h"
#include "quandor/printers.h"

#include "test_record.h"

namespace {

std::string dump(const std::string& service, std::uint32_t command,
                 std::vector<std::uint8_t>& buffer, std::uint64_t length) {
  return stdout_of([&] { print_state_dump(service, command, buffer.data(), length); });
}

TEST(state_dump, varsium_scan_state_with_derived_values) {
  auto buffer = reply_buffer();
  const std::int32_t values[] = {-32768, 6, 7, 0, 0, 8, 3, 2, 1, 5};
  for (std::size_t i = 0; i < 10; ++i) put(buffer, 4 * i, values[i]);
  EXPECT_EQ(dump("varsium", 0xd0, buffer, 40),
            "scanState                      : 2\n"
            "nextScan in                    : 2.56 sec\n"
            "numLoFiReads                   : 3\n"
            "numFramesSinceOnWrist          : 8\n"
            "numLoFiScans_Accepted          : 5\n"
            "numLoFiScans_Rejected          : 4294967294\n\n"
            "waitNumFramesAfterSuccess      : 7\n"
            "motionTriggerNumFrames         : 6\n"
            "accelVarThreshold              : -0.5\n\n");
  EXPECT_EQ(dump("varsium", 0x1234, buffer, 1), dump("varsium", 0xd0, buffer, 40));
}

TEST(state_dump, power_state_of_lyn_and_btmspk_only_for_0xd0) {
  auto buffer = reply_buffer();
  for (std::uint32_t i = 0; i < 3; ++i) put(buffer, 4 * i, i + 1);
  const std::string fields = "power state   : 1\nAP request    : 2\nZOL request   : 3\n";
  EXPECT_EQ(dump("lyn", 0xd0, buffer, 12), "lyn State\n" + fields);
  EXPECT_EQ(dump("btmspk", 0xd0, buffer, 12), "btmspk State\n" + fields);
  EXPECT_EQ(dump("lyn", 0xd1, buffer, 12),
            stdout_of([&] { hexdump(buffer.data(), 12, nullptr); }));
}

TEST(state_dump, button_counts_print_ap_before_zol) {
  auto buffer = reply_buffer();
  buffer[0] = 7;
  put<std::uint32_t>(buffer, 1, 11);
  put<std::uint32_t>(buffer, 5, 0x10000);
  const std::string fields = "Enable        : 1\nAP ref        : 65536\nZOL ref       : 11\n";
  EXPECT_EQ(dump("zol-button", 0xd0, buffer, 9), "PKEY MCLK Counts\n" + fields);
  EXPECT_EQ(dump("zol-button", 0xd1, buffer, 9), "PKEY PellamEN Counts\n" + fields);
}

TEST(state_dump, button_forwards_stats_and_assets_and_dumps_the_rest) {
  auto buffer = reply_buffer();
  EXPECT_TRUE(dump("zol-button", 0xd7, buffer, 2000).starts_with("pkey_stats\n"));
  EXPECT_TRUE(dump("zol-button", 0xd8, buffer, 1200).starts_with("Length: 1200, expected 1200\n"));
  const std::string plain = stdout_of([&] { hexdump(buffer.data(), 4, nullptr); });
  EXPECT_EQ(dump("zol-button", 0xd2, buffer, 4), plain);
  EXPECT_EQ(dump("Zol-button", 0xd0, buffer, 4), plain);
  EXPECT_EQ(dump("mux", 0xd1, buffer, 4), plain);
  EXPECT_EQ(dump("zol-button", 0xd0, buffer, 0), "");
  EXPECT_EQ(stdout_of([] { print_state_dump("lyn", 0xd0, nullptr, 12); }), "");
}

TEST(state_dump, mux_samples_one_line_a_whole_entry) {
  auto buffer = reply_buffer();
  put<std::uint64_t>(buffer, 0, 1234);
  put<std::uint32_t>(buffer, 8, 0x5);
  put<std::uint64_t>(buffer, 12, 7);
  put<std::uint32_t>(buffer, 20, 0x1ab);
  EXPECT_EQ(dump("mux", 0xd0, buffer, 11), "");
  EXPECT_EQ(dump("mux", 0xd0, buffer, 25), "data: 5 timestamp:1234\ndata:1ab timestamp:7\n");
}

}  // namespace
