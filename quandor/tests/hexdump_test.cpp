#include "quandor/hexdump.h"

#include "test_record.h"

namespace {

std::string dump(const std::vector<std::uint8_t>& bytes, const char* label = nullptr) {
  return stdout_of([&] { hexdump(bytes.data(), bytes.size(), label); });
}

TEST(hexdump, nothing_for_no_bytes) {
  const std::uint8_t byte = 0x41;
  EXPECT_EQ(stdout_of([&] { hexdump(&byte, 0, "x"); }), "");
  EXPECT_EQ(stdout_of([] { hexdump(nullptr, 16, nullptr); }), "");
}

TEST(hexdump, partial_last_line_keeps_the_separator_column) {
  std::vector<std::uint8_t> bytes(20);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i);
  EXPECT_EQ(dump(bytes),
            "00000000: 00 01 02 03 04 05 06 07  08 09 0a 0b 0c 0d 0e 0f  | ........ ........\n"
            "00000010: 10 11 12 13 " + std::string(12 * 3 + 1, ' ') + " | ....\n");
}

TEST(hexdump, whole_lines_and_a_label_on_each) {
  std::vector<std::uint8_t> bytes(32, 'z');
  for (std::size_t i = 0; i < 16; ++i) bytes[i] = static_cast<std::uint8_t>('A' + i);
  const std::string second = "7a 7a 7a 7a 7a 7a 7a 7a  7a 7a 7a 7a 7a 7a 7a 7a  | zzzzzzzz zzzzzzzz\n";
  EXPECT_EQ(dump(bytes, "dev"),
            "dev 00000000: 41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50  | ABCDEFGH IJKLMNOP\n"
            "dev 00000010: " + second);
}

TEST(hexdump, blank_del_and_high_bytes_print_as_dots) {
  EXPECT_EQ(dump({0x20, 0x41, 0x7f, 0x80, 0x21, 0x7e, 0xff, 0x1f}),
            "00000000: 20 41 7f 80 21 7e ff 1f  " + std::string(8 * 3, ' ') +
                " | .A..!~.. \n");
}

}  // namespace
