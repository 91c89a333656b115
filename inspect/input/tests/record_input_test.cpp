#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "inspect/input/tests/test_inputs.h"

namespace {

using inspect::input_form;
using namespace inspect_test;

// Name, input, the form asked for, what is read.
using reader_case = std::tuple<std::string, std::string, std::optional<input_form>, std::string>;

std::string values(int count, const std::string& value = "7") {
  std::string list = value;
  for (int i = 1; i < count; ++i) list += "," + value;
  return list;
}

std::string exactly_65536(int seed) {
  const std::string line = profile_line(seed);
  return line.substr(0, 14) + std::string(65536 - line.size(), ' ') + line.substr(14);
}

TEST(RecordInput, ReadsEachForm) {
  const std::string bad = "\n{  'category':'x', 'binary-data':[", long_text(400000, 'x');
  const std::string harvest2 = "harvest | kelvra-inspect: t: line 2: ";
  const std::string hex2 = "hex | kelvra-inspect: t: line 2: prof-event data holds ";
  const auto hex = input_form::hex, raw = input_form::raw;
  const std::vector<reader_case> cases = {
      {"harvest among other lines, escapes, tab, crlf, no last newline",
       "\x1b[1m=====kelvra zol-button profile=====\x1b[0m\t\n" + profile_line(1) + "\nAssertion failed\n" +
           profile_line(2, ", 'calendar-time':'Mar 04 10:15:02.123456'}\r"),
       {}, "harvest 2:1 4:2[Mar 04 10:15:02.123456]"},
      {"the last binary-data counts",
       "{  'category':'x', 'name':' 'binary-data':[1]', " +
           profile_line(3, ", 'calendar-time':'[1]'}").substr(3),
       {}, "harvest 1:3[[1]]"},
      {"hex, both cases, blank line",
       "x\n" + hex_line(5) + "\r\n\n" + hex_line(6, "0123456789ABCDEF") + "\n", {}, "hex 2:5 4:6"},
      {"last line without newline after a short one", "\n" + hex_line(5), hex, "hex 2:5"},
      {"hex first", hex_line(7) + "\n" + profile_line(8) + "\n", {}, "hex 1:7"},
      {"profile first", profile_line(8) + "\n" + hex_line(7) + "\n", {}, "harvest 1:8"},
      {"raw", raw_record(7) + raw_record(9), {}, "raw 0:7 48:9"},
      {"raw with a tail", raw_record(9) + raw_record(7) + "abc", raw,
       "raw 0:9 48:7kelvra-inspect: t: warning: 3 trailing bytes at byte 96 ignored "
       "(not a whole 48-byte record)\n"},
      {"asked form wins", profile_line(1) + "\n", hex, "hex"},
      {"empty", "", {}, "harvest"},
      {"long other lines skipped", long_text + "\n" + long_text + "\n" + profile_line(2), {},
       "harvest 3:2"},
      {"65536 bytes", "\n" + exactly_65536(1) + "\n" + hex_line(1), {}, "harvest 2:1"},
      {"65537 bytes", "\n" + exactly_65536(1) + " \n", {},
       harvest2 + "line longer than 65536 bytes"},
      {"47 values", bad + values(47) + "]}", {}, harvest2 + "binary-data holds 47 values, not 48"},
      {"49 values", bad + values(49) + "]}", {}, harvest2 + "binary-data holds 49 values, not 48"},
      {"not a byte", bad + "300," + values(47) + "]}", {},
       harvest2 + "binary-data value 300 is not a byte"},
      {"no binary-data", "\n{  'category':'x', 'binary-data': [1]}", {},
       harvest2 + "no binary-data"},
      {"no closing bracket", bad + values(48), {},
       harvest2 + "binary-data is not a list of decimal numbers"},
      {"text after the record", "\n" + profile_line(1, "} "), {},
       harvest2 + "unexpected text after binary-data"},
      {"apostrophe in calendar time", "\n" + profile_line(1, ", 'calendar-time':'it's'}"), {},
       harvest2 + "unexpected text after binary-data"},
      {"hex digits short", "\n" + hex_line(1).substr(0, 105), {}, hex2 + "94 hex digits, not 96"},
      {"not a hex digit", "\n" + hex_line(1).substr(0, 106) + "g", {},
       hex2 + "'g', not a hex digit"},
      {"control byte", "\n" + hex_line(1).substr(0, 106) + "\x10", hex,
       hex2 + "byte 0x10, not a hex digit"},
  };
  for (const auto& [name, input, asked, seen] : cases) {
    EXPECT_EQ(drain(inspect::memory_source(input), "t", asked), seen) << name;
  }
}

// Far more than a chunk, with lines of every length up to 64 KiB, so that
// records and lines straddle every kind of chunk boundary.
TEST(RecordInput, BigInputsAcrossChunks) {
  for (const input_form form : {input_form::harvest, input_form::hex, input_form::raw}) {
    std::string input, seen(inspect::form_name(form));
    for (int i = 0; i < 40000; ++i) {
      if (form == input_form::raw) {
        input += raw_record(i % 256);
        add_record(seen, 48 * i, i % 256);
        continue;
      }
      input += std::string(i % 97 == 1 ? 65536 - i % 7 : i % 300, '=') + "\n";
      input += (form == input_form::hex ? hex_line(i % 256) : profile_line(i % 256)) + "\n";
      add_record(seen, 2 * i + 2, i % 256);
    }
    EXPECT_TRUE(drain(inspect::memory_source(input), "t") == seen) << inspect::form_name(form);
  }
}

TEST(RecordInput, NamesAndFaultLines) {
  for (const std::string_view name : {"harvest", "hex", "raw"}) {
    EXPECT_EQ(inspect::form_name(inspect::form_of_name(name).value()), name);
  }
  EXPECT_EQ(inspect::form_of_name("text"), std::nullopt);
  EXPECT_EQ(inspect::fault_line({"-", "line 3", "no binary-data"}),
            "kelvra-inspect: standard input: line 3: no binary-data");
}

}  // namespace
