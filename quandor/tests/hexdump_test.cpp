#include "quandor/hexdump.h"

#include "test_record.h"

namespace {

std::string dump(const std::vector<std::uint8_t>& bytes, const char* label = nullptr) {
  return stdout_of([&] { hexdump(bytes.data(), bytes.size(), label); });
}

TEST(hexdump, partial_last_line_keeps_the_separator_column) {
  EXPECT_EQ(dump({}, "x"), "");
  std::vector<std::uint8_t> bytes(20);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i);
  EXPECT_EQ(dump(bytes),
            "00000000: 00 01 02 03 04 05 06 07  08 09 0a 0b 0c 0d 0e 0f  | ........ ........\n"
            "00000010: 10 11 12 13 " + std::string(12 * 3 + 1, ' ') + " | ....\n");
}

TEST(hexdump, label_on_each_line_and_dots_for_blank_del_and_high_bytes) {
  std::vector<std::uint8_t> bytes(32, 'z');
  const std::uint8_t odd[] = {0x20, 0x41, 0x7f, 0x80, 0x21, 0x7e, 0xff, 0x1f};
  std::copy(std::begin(odd), std::end(odd), bytes.begin());
  EXPECT_EQ(dump(bytes, "dev"),
            "dev 00000000: 20 41 7f 80 21 7e ff 1f  7a 7a 7a 7a 7a 7a 7a 7a  | .A..!~.. zzzzzzzz\n"
            "dev 00000010: 7a 7a 7a 7a 7a 7a 7a 7a  7a 7a 7a 7a 7a 7a 7a 7a  | zzzzzzzz zzzzzzzz\n");
}

}  // namespace
