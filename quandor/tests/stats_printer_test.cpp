#include "quandor/printers.h"

#include "test_record.h"

namespace {

// A 60-character label: the caption padded to 58, then ": ".
std::string line(const std::string& caption, const std::string& value) {
  return caption + std::string(58 - caption.size(), ' ') + ": " + value + "\n";
}

std::string print(std::uint8_t* buffer, std::uint64_t length) {
  return stdout_of([&] { print_pkey_stats("zol-button", 215, buffer, length); });
}

TEST(pkey_stats, every_field_in_print_order_whatever_the_length) {
  auto buffer = reply_buffer(2000);
  put<std::uint64_t>(buffer, 0, 1000);   // finger on
  put<std::uint64_t>(buffer, 8, 2000);   // finger off
  put<std::uint64_t>(buffer, 16, 3000);  // start haptics
  put<std::uint64_t>(buffer, 24, 4000);  // finger detect to down
  for (std::uint64_t edge = 0; edge < 6; ++edge) {
    put<std::uint64_t>(buffer, 88 + 8 * edge, 100 + edge);
    put<std::uint64_t>(buffer, 136 + 8 * edge, 200 + edge);
    put<std::uint64_t>(buffer, 184 + 8 * edge, 300 + edge);
  }
  put<std::uint32_t>(buffer, 233, 7);
  put<std::uint64_t>(buffer, 266, 995);  // second scan, before finger on
  put<std::uint32_t>(buffer, 274, 0x01020304);
  put<std::uint32_t>(buffer, 278, 5);

  std::string expected = "pkey_stats\n-- Last Button Press --\n" +
                         line("Click Count", "3") +
                         line("Finger ON Timestamp", "1000 us") +
                         line("Start Haptics Timestamp", "3000 us") +
                         line("Latency - Finger Detect to Button Down", "4000 us");
  for (int k = 0; k < 3; ++k) {
    const auto us = [&](int base, int up) { return std::to_string(base + 2 * k + up) + " us"; };
    expected += "--Click " + std::to_string(k + 1) + "--\n" +
                line("Latency   - Button Down to Play Asset", us(300, 0)) +
                line("Timestamp - Button Down", us(100, 0)) +
                line("Timestamp - Button Down Play Asset", us(200, 0)) +
                line("Latency   - Button Up to Play Asset", us(300, 1)) +
                line("Timestamp - Button Up", us(100, 1)) +
                line("Timestamp - Button Up Play Asset", us(200, 1));
  }
  expected += line("Second scan delta from FD", "18446744073709551611 us") +
              line("Num Gorvin Scans", "16909060") + line("Num Lumet Scans", "5") +
              line("Finger OFF Timestamp", "2000 us") + "\n\n\n";
  EXPECT_EQ(print(buffer.data(), 2000), expected);
  EXPECT_EQ(print(buffer.data(), 1), expected);
  EXPECT_EQ(print(buffer.data(), 0), "");
  EXPECT_EQ(print(nullptr, 2000), "");
}

}  // namespace
