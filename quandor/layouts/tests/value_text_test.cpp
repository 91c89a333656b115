// Each value form printed as the standard stream prints the value with its
// default flags, for words at the edges of every form; and read back.

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <iomanip>
#include <sstream>

#include "quandor/layouts/field_rows.h"

namespace {

using layouts::value_form;

// The value the row stands for, through the stream.
std::string streamed(value_form form, std::uint32_t word, std::uint64_t wide, std::uint64_t base) {
  std::ostringstream out;
  const auto signed_word = static_cast<std::int32_t>(word);
  switch (form) {
    case value_form::u32: out << word; break;
    case value_form::i32: out << signed_word; break;
    case value_form::u64: out << wide; break;
    case value_form::flag: out << (word != 0); break;
    case value_form::count_above_bit0: out << (word >> 1); break;
    case value_form::u64_after: out << wide - base; break;
    case value_form::u32_less: out << word - static_cast<std::uint32_t>(base); break;
    case value_form::scan_ticks: out << word * layouts::seconds_per_scan_tick; break;
    case value_form::fixed_single:
      out << static_cast<float>(signed_word) * layouts::fixed_point_scale;
      break;
    case value_form::fixed_double:
      out << static_cast<double>(signed_word) * layouts::fixed_point_scale;
      break;
    case value_form::hex_u32: out << std::hex << std::setw(2) << word; break;
    case value_form::text: break;
  }
  return out.str();
}

TEST(ValueText, EachFormPrintsAsTheStreamAndReadsBack) {
  constexpr value_form forms[] = {
      value_form::u32,         value_form::i32,          value_form::u64,
      value_form::flag,        value_form::count_above_bit0, value_form::u64_after,
      value_form::u32_less,    value_form::scan_ticks,   value_form::fixed_single,
      value_form::fixed_double, value_form::hex_u32};
  constexpr std::uint32_t words[] = {0, 1, 9, 15, 16, 255, 256, 65535, 65536, 98304, 0x7fffffff,
                                     0x80000000, 0x80000001, 0xfffffffe, 0xffffffff, 123456789};
  for (const value_form form : forms)
    for (const std::uint32_t word : words)
      for (const std::uint64_t base : {std::uint64_t{0}, std::uint64_t{5}}) {
        // The value at 0, the base after it at 8.
        std::array<std::uint8_t, 16> record{};
        const std::uint64_t wide = form == value_form::flag ? word & 0xff : word | std::uint64_t{word} << 32;
        std::memcpy(record.data(), &wide, form == value_form::flag ? 1 : 8);
        std::memcpy(record.data() + 8, &base, 8);
        const layouts::field_row rows[] = {{.caption = "v ", .form = form, .offset = 0, .base = 8}};
        std::ostringstream printed;
        layouts::write_entry(printed, rows, byte_reader(record), 0);
        const std::uint32_t shown = form == value_form::flag ? word & 0xff : word;
        ASSERT_EQ(printed.str(), "v " + streamed(form, shown, wide, base))
            << static_cast<int>(form) << " " << word;
        if (form == value_form::u32_less || form == value_form::u64_after) continue;  // derived
        std::array<std::uint8_t, 16> back{};
        std::string message;
        ASSERT_TRUE(layouts::parse_entry("t", rows, printed.str(), back, 0, message)) << message;
        std::ostringstream again;
        layouts::write_entry(again, rows, byte_reader(back), 0);
        EXPECT_EQ(again.str(), printed.str()) << static_cast<int>(form) << " " << word;
      }
}

}  // namespace
