// Lines that no record prints are refused, naming the line and what is wrong.

#include <gtest/gtest.h>

#include "printed_block.h"

namespace {

using lines = std::vector<std::string>;

// The first `from` of line `at` becomes `to`.
void change(lines& block, std::size_t at, std::string_view from, std::string_view to) {
  std::string& line = block.at(at);
  const std::size_t where = line.find(from);
  if (where == std::string::npos) return;  // the case then fails on its message
  line = line.substr(0, where) + std::string(to) + line.substr(where + from.size());
}

struct malformed_case {
  const char* name;
  const codec& kind;
  std::size_t record_size;  // of zeros, printed before the edit
  void (*edit)(lines&);
  std::size_t line;
  const char* message;
};

const malformed_case cases[] = {
    {"statistics heading", stats_codec, 282, [](lines& l) { l[0] = std::string("pkey_stat"); },
     0, "statistics wants the line 'pkey_stats'"},
    {"time not a number", stats_codec, 282, [](lines& l) { change(l, 3, "0 us", "1x us"); },
     3, "statistics line 'Finger ON Timestamp' wants a decimal number of microseconds"},
    {"time without its unit", stats_codec, 282, [](lines& l) { change(l, 3, "0 us", "0"); },
     3, "statistics line 'Finger ON Timestamp' wants a decimal number of microseconds"},
    {"caption spacing", stats_codec, 282,
     [](lines& l) { change(l, 7, "Latency   -", "Latency -"); },
     7, "statistics wants the label 'Latency   - Button Down to Play Asset'"},
    {"click count of 31 bits", stats_codec, 282,
     [](lines& l) { change(l, 2, ": 0", ": 2147483648"); },
     2, "statistics line 'Click Count' does not fit its field"},
    {"time past 64 bits", stats_codec, 282,
     [](lines& l) { change(l, 30, "0 us", "18446744073709551616 us"); },
     30, "statistics line 'Finger OFF Timestamp' does not fit its field"},
    {"negative count", stats_codec, 282, [](lines& l) { change(l, 28, ": 0", ": -1"); },
     28, "statistics line 'Num Gorvin Scans' wants a decimal number"},
    {"leading zero", stats_codec, 282, [](lines& l) { change(l, 29, ": 0", ": 00"); },
     29, "statistics line 'Num Lumet Scans' does not print back the same"},
    {"last empty line", stats_codec, 282, [](lines& l) { l[33] = std::string(" "); },
     33, "statistics wants an empty line"},
    {"a line short", stats_codec, 282, [](lines& l) { l.pop_back(); },
     33, "statistics ends after 33 of its 34 lines"},
    {"a line more", stats_codec, 282, [](lines& l) { l.emplace_back(); },
     34, "statistics has lines past its end"},
    {"power state of another service", btmspk_codec, 12, [](lines& l) { l[0] = std::string("mux State"); },
     0, "power state heading names no speaker service"},
    {"power counter past 32 bits", btmspk_codec, 12,
     [](lines& l) { change(l, 2, ": 0", ": 4294967296"); },
     2, "power state line 'AP request' does not fit its field"},
    {"counts heading", enable_counts_codec, 9, [](lines& l) { l[0] = std::string("PKEY Counts"); },
     0, "counts heading names no counts command"},
    {"enable of 2", enable_counts_codec, 9, [](lines& l) { change(l, 1, ": 0", ": 2"); },
     1, "counts line 'Enable' wants 0 or 1"},
    {"rejected scans not reads less accepted", scan_state_codec, 40,
     [](lines& l) { change(l, 5, ": 0", ": 1"); },
     5, "scan state line 'numLoFiScans_Rejected' does not print back the same"},
    {"seconds between ticks", scan_state_codec, 40,
     [](lines& l) { change(l, 1, "0 sec", "2.5 sec"); },
     1, "scan state line 'nextScan in' has no field value that prints so"},
    {"threshold past 32 bits", scan_state_codec, 40,
     [](lines& l) { change(l, 9, ": 0", ": 1e99"); },
     9, "scan state line 'accelVarThreshold' does not fit its field"},
    {"threshold not a fraction", scan_state_codec, 40,
     [](lines& l) { change(l, 9, ": 0", ": 0.5.1"); },
     9, "scan state line 'accelVarThreshold' wants a decimal fraction"},
    {"error stats heading", input_report_errors_codec, 60, [](lines& l) { l[0] = std::string("=== x"); },
     0, "input report errors wants its heading"},
    {"resets below 32 bits", input_report_errors_codec, 60,
     [](lines& l) { change(l, 3, "# 0", "# -2147483649"); },
     3, "input report errors line '_resets_since_boot' does not fit its field"},
    {"sample data not hex", samples_codec, 24, [](lines& l) { change(l, 1, " 0 ", "zz "); },
     1, "samples field 'data' wants a hexadecimal number"},
    {"sample data padded twice", samples_codec, 24, [](lines& l) { change(l, 0, ":", ":  "); },
     0, "samples line does not print back the same"},
    {"sample without timestamp", samples_codec, 24,
     [](lines& l) { change(l, 1, " timestamp:", " time:"); },
     1, "samples field 'timestamp' is missing"},
    {"asset length 0", assets_codec<1200>, 1200, [](lines& l) { change(l, 0, "1200,", "0,"); },
     0, "assets line 'Length' wants a reply length from 1 to 4096"},
    {"asset length past the buffer", assets_codec<1200>, 1200,
     [](lines& l) { change(l, 0, "1200,", "4097,"); },
     0, "assets line 'Length' wants a reply length from 1 to 4096"},
    {"asset rows out of order", assets_codec<1200>, 1200,
     [](lines& l) { change(l, 2, "SingleUp", "SingleDown"); },
     2, "assets wants the line 'ASSET [Slow][SingleUp]: ...'"},
    {"gain not as printed", assets_codec<1200>, 1200,
     [](lines& l) { change(l, 3, "gain 0", "gain 1.50"); },
     3, "assets field 'gain' has no field value that prints so"},
    {"slot past 31 bits", assets_codec<1200>, 1200,
     [](lines& l) { change(l, 4, "slot 0", "slot 2147483648"); },
     4, "assets field 'slot' does not fit its field"},
    {"asset enable of 2", assets_codec<1200>, 1200,
     [](lines& l) { change(l, 5, "enable 0", "enable 2"); },
     5, "assets field 'enable' wants 0 or 1"},
    {"text after the last field", assets_codec<1200>, 1200, [](lines& l) { l[48] += ", min 0"; },
     48, "assets field 'max' wants a decimal number"},
    {"entry past a short reply", assets_codec<25>, 1200,
     [](lines& l) { change(l, 2, "max 0", "max 1"); },
     2, "assets line 'ASSET [Slow][SingleUp]' has values past the reply length"},
    {"field past a reply ending in an entry", assets_codec<10>, 1200,
     [](lines& l) { change(l, 1, "max 0", "max 1"); },
     1, "assets line 'ASSET [Slow][SingleDown]' has values past the reply length"},
};

TEST(malformed_block, refused_at_the_offending_line) {
  for (const malformed_case& c : cases) {
    lines block = printed_lines(c.kind, bytes(c.record_size));
    layouts::parse_fault untouched;
    ASSERT_TRUE(c.kind.parse(views(block), untouched)) << c.name << ": " << untouched.message;
    c.edit(block);
    layouts::parse_fault fault;
    EXPECT_FALSE(c.kind.parse(views(block), fault)) << c.name;
    EXPECT_EQ(fault.line, c.line) << c.name;
    EXPECT_EQ(fault.message, c.message) << c.name;
  }
}

}  // namespace
