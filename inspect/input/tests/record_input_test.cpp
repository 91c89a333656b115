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
  const std::string header = "kelvra-inspect: t: line 1: note: text before the first line of a harvest; passed over\n";
  const std::string line2 = "kelvra-inspect: t: line 2: warning: ";
  const std::string skipped = "; line skipped\n";
  const auto harvest = input_form::harvest, hex = input_form::hex, raw = input_form::raw;
  const std::vector<reader_case> cases = {
      {"harvest among other lines, escapes, tab, crlf, no last newline",
       "\x1b[1m=====kelvra zol-button profile=====\x1b[0m\t\n" + profile_line(1) + "\nAssertion failed\n" +
           profile_line(2, ", 'calendar-time':'Mar 04 10:15:02.123456'}\r"),
       {}, "harvest 2:1 4:2[Mar 04 10:15:02.123456]" + header},
      {"the last binary-data counts",
       "{  'category':'x', 'name':' 'binary-data':[1]', " +
           profile_line(3, ", 'calendar-time':'[1]'}").substr(3),
       {}, "harvest 1:3[[1]]"},
      {"a text with line ends runs over three lines",
       profile_line(4).substr(0, 20) + "\n\r\n" + profile_line(4).substr(20) + "\n" + profile_line(5) + "\n",
       {}, "harvest 1:4 4:5"},
      {"hex, both cases, blank line",
       "x\n" + hex_line(5) + "\r\n\n" + hex_line(6, "0123456789ABCDEF") + "\n", {}, "hex 2:5 4:6"},
      {"a whole last line without newline", "\n" + hex_line(5), hex, "hex 2:5"},
      // The strongest sign first: a profile line makes a harvest.
      {"hex first", hex_line(7) + "\n" + profile_line(8) + "\n", {}, "harvest 2:8" + header},
      {"profile first", profile_line(8) + "\n" + hex_line(7) + "\n", {}, "harvest 1:8"},
      {"a control byte in a record's text stays a harvest",
       "==========kelvra zol-button profile==============\n{  'category':'x\x01', 'binary-data':[" +
           values(48) + "]}\n",
       {}, "harvest 2:256"},
      {"raw", raw_record(7) + raw_record(9), {}, "raw 0:7 48:9"},
      {"raw with a tail", raw_record(9) + raw_record(7) + "abc", raw,
       "raw 0:9 48:7kelvra-inspect: t: byte 96: warning: 3 trailing bytes, not a whole 48-byte "
       "record; left out\n"},
      {"the form asked for wins", profile_line(1) + "\n", hex, "hex | nothing"},
      {"empty", "", {}, "| kelvra-inspect: t: empty: no capture in it"},
      {"text that is no capture", "# kelvra\n\nA README.\n", {},
       "| kelvra-inspect: t: not a capture: no harvest banner, profile line or failure line, no "
       "\"prof-event \" line, and text rather than raw records in its first 64 KiB (--from names "
       "the form)"},
      {"long lines of a header passed over", long_text + "\n" + long_text + "\n" + profile_line(2), harvest,
       "harvest 3:2kelvra-inspect: t: lines 1-2: note: text before the first line of a harvest; passed over\n"},
      {"65536 bytes", "\n" + exactly_65536(1) + "\n" + hex_line(1), {},
       "harvest 2:1" + header + "kelvra-inspect: t: line 3: warning: the input ends inside the line; left out\n"},
      {"65537 bytes", "\n" + exactly_65536(1) + " \n", {},
       "harvest" + header + line2 + "line longer than 65536 bytes; skipped\n"},
      {"47 values", bad + values(47) + "]}\n" + profile_line(3) + "\n", {},
       "harvest 3:3" + header + line2 + "binary-data holds 47 values, not 48" + skipped},
      {"49 values", bad + values(49) + "]}\n", {},
       "harvest" + header + line2 + "binary-data holds 49 values, not 48" + skipped},
      {"not a byte", bad + "300," + values(47) + "]}\n", {},
       "harvest" + header + line2 + "binary-data value 300 is not a byte" + skipped},
      {"no binary-data", "\n{  'category':'x', 'binary-data': [1]}\n", {},
       "harvest" + header + line2 + "no binary-data" + skipped},
      {"cut short inside the list", bad + values(30), {},
       "harvest" + header + line2 +
           "the input ends inside the line: binary-data is not a list of decimal numbers; left out\n"},
      {"text after the record", "\n" + profile_line(1, "} ") + "\n", {},
       "harvest" + header + line2 + "unexpected text after binary-data" + skipped},
      {"apostrophe in calendar time", "\n" + profile_line(1, ", 'calendar-time':'it's'}") + "\n", {},
       "harvest" + header + line2 + "unexpected text after binary-data" + skipped},
      {"hex digits short", "\n" + hex_line(1).substr(0, 105) + "\n" + hex_line(2) + "\n", {},
       "hex 3:2" + line2 + "prof-event data holds 94 hex digits, not 96" + skipped},
      {"not a hex digit", "\n" + hex_line(1).substr(0, 106) + "g\n", {},
       "hex" + line2 + "prof-event data holds 'g', not a hex digit" + skipped},
      {"control byte", "\n" + hex_line(1).substr(0, 106) + "\x10\n", hex,
       "hex" + line2 + "prof-event data holds byte 0x10, not a hex digit" + skipped},
  };
  for (const auto& [name, input, asked, seen] : cases) {
    EXPECT_EQ(drain(inspect::memory_source(input), "t", asked), seen) << name;
  }
}

// Far more than a chunk, with lines of every length up to 64 KiB, so that
// records and lines straddle every kind of chunk boundary.
TEST(RecordInput, BigInputsAcrossChunks) {
  for (const input_form form : {input_form::harvest, input_form::hex, input_form::raw}) {
    std::string input, seen(inspect::form_of(form).name);
    for (int i = 0; i < 40000; ++i) {
      if (form == input_form::raw) {
        input += raw_record(i % 256);
        add_record(seen, 48 * static_cast<std::uint64_t>(i), i % 256);
        continue;
      }
      input += std::string(i % 97 == 1 ? 65536 - i % 7 : i % 300 + 1, '=') + "\n";
      input += (form == input_form::hex ? hex_line(i % 256) : profile_line(i % 256)) + "\n";
      add_record(seen, 2 * static_cast<std::uint64_t>(i) + 2, i % 256);
    }
    if (form == input_form::harvest)
      seen += "kelvra-inspect: t: line 1: note: text before the first line of a harvest; passed over\n";
    EXPECT_TRUE(drain(inspect::memory_source(input), "t", form) == seen) << inspect::form_of(form).name;
  }
}

TEST(RecordInput, NamesAndFaultLines) {
  for (const std::string_view name : {"harvest", "hex", "raw"}) {
    EXPECT_EQ(inspect::form_of(inspect::form_of_name(name).value()).name, name);
  }
  EXPECT_EQ(inspect::form_of_name("text"), std::nullopt);
  EXPECT_EQ(inspect::fault_line({"-", "line 3", "no binary-data"}),
            "kelvra-inspect: standard input: line 3: no binary-data");
}

}  // namespace
