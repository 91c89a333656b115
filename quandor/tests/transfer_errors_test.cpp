#include "quandor/printers.h"

#include "test_record.h"

namespace {

TEST(transfer_errors, one_printf_line_an_entry_with_a_terminated_name) {
  auto buffer = reply_buffer();
  const std::int32_t counts[] = {100, 1, 200, 2, 300, -3};
  for (std::size_t i = 0; i < 6; ++i) put(buffer, 4 * i, counts[i]);
  std::memcpy(buffer.data() + 24, "spi", 3);
  std::memcpy(buffer.data() + 32 + 24, "ABCDEFGH", 8);
  buffer[95] = 'x';
  const auto print = [&](std::uint64_t length) {
    return stdout_of([&] { print_transfer_errors("x", 0x45, buffer.data(), length); });
  };
  EXPECT_EQ(print(31), "");
  EXPECT_EQ(print(2 * 32 + 31),
            "spi             read_errors: 1/100 write_errors: 2/200 other_errors: -3/300\n"
            "ABCDEFG         read_errors: 0/0 write_errors: 0/0 other_errors: 0/0\n");
  EXPECT_EQ(buffer[63], 0);
  EXPECT_EQ(buffer[95], 'x');  // past the whole entries: untouched
}

}  // namespace
