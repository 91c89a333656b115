// The stream a line is built in: widths, number bases, doubles, and lines
// longer than its first buffer.

#include <gtest/gtest.h>

#include <string>

#include "liblog_zol/line_builder.h"
#include "liblog_zol/text_shapes.h"

namespace {

using zol::line_builder;

TEST(line_builder_test, width_pads_the_next_value_only_and_never_cuts) {
  line_builder line;
  line.width(5) << 12u << 34u << ",";
  line.width(3) << 123456u;
  line.width(4) << "ab";
  line.width(6) << zol::quoted_text{"x"};
  EXPECT_EQ(line.take(), "   1234,123456  ab   'x'");
}

TEST(line_builder_test, hex_lasts_until_switched_back) {
  line_builder line;
  line.hex() << 255u << " " << 4294967295u << " ";
  line.dec() << 255u;
  EXPECT_EQ(line.take(), "ff ffffffff 255");
}

TEST(line_builder_test, doubles_have_six_significant_digits) {
  line_builder line;
  for (double value : {1.0, -0.5, 1.0 / 65536, -1.0 / 4096, 123456.0, 1234567.0, 0.0})
    line << value << " ";
  EXPECT_EQ(line.take(), "1 -0.5 1.52588e-05 -0.000244141 123456 1.23457e+06 0 ");
}

TEST(line_builder_test, byte_list_pads_as_a_whole) {
  const std::uint8_t bytes[] = {0, 9, 10, 99, 100, 255};
  line_builder line;
  line.width(24) << zol::byte_list{bytes} << zol::byte_list{{}};
  EXPECT_EQ(line.take(), "     [0,9,10,99,100,255][]");
}

TEST(line_builder_test, long_lines_keep_every_character) {
  line_builder line;
  std::string expected;
  for (unsigned i = 0; i < 2000; ++i) {
    line << zol::key_text{"k"};
    line.width(3) << i;
    expected += " 'k':" + std::string(i < 10 ? 2 : i < 100 ? 1 : 0, ' ') + std::to_string(i);
  }
  EXPECT_EQ(line.take(), expected);
}

}  // namespace
