// Print, parse back, and get the same bytes: for records whose unprinted
// bytes are zero and whose scaled values print distinctly.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <limits>

#include "printed_block.h"

namespace {

// Distinct non-zero bytes, so that a field read or stored at the wrong offset
// shows.
bytes pattern(std::size_t size, unsigned seed) {
  bytes record(size);
  for (std::size_t i = 0; i < size; ++i)
    record[i] = static_cast<std::uint8_t>((i * 37 + seed) % 251 + 1);
  return record;
}

// Statistics with the reserved spans and bit 0 of click_flags cleared, and
// the 64-bit words at `offsets` set to `value`.
bytes stats(unsigned seed, std::initializer_list<std::size_t> offsets = {},
            std::uint64_t value = 0) {
  bytes record = pattern(layouts::stats_size, seed);
  std::fill(record.begin() + 32, record.begin() + 88, 0);
  std::fill(record.begin() + 232, record.begin() + 266, 0);
  record[233] = static_cast<std::uint8_t>(seed & 0xfe);
  for (const std::size_t offset : offsets) put(record, offset, value);
  return record;
}

bytes scan_state(std::int32_t threshold, std::uint32_t ticks) {
  bytes record = pattern(layouts::scan_state_size, 3);
  std::fill(record.begin() + 12, record.begin() + 20, 0);
  put(record, 0, threshold);
  put(record, 32, ticks);
  return record;
}

bytes samples() {
  bytes reply = pattern(3 * layouts::sample_size, 2);
  put<std::uint32_t>(reply, 8, 0x5);
  put<std::uint32_t>(reply, 20, 0x1ab);
  put<std::uint32_t>(reply, 32, 0xffffffff);
  return reply;
}

// Entry (speed, state): enable, gain, min, max, slot.
bytes assets(std::size_t entries) {
  bytes table(layouts::assets_size);
  const std::int32_t gains[] = {-32768, 0x18000, 65536, 1,
                                std::numeric_limits<std::int32_t>::min()};
  const std::int32_t slots[] = {-1, 3, 0, std::numeric_limits<std::int32_t>::max()};
  for (std::size_t entry = 0; entry < entries; ++entry) {
    const std::size_t at = 25 * entry;
    table[at] = static_cast<std::uint8_t>(entry % 2);
    put(table, at + 1, gains[entry % std::size(gains)]);
    put<std::uint64_t>(table, at + 5, entry * 1000 + 7);
    put<std::uint64_t>(table, at + 13, ~std::uint64_t{0} - entry);
    put(table, at + 21, slots[entry % std::size(slots)]);
  }
  return table;
}

struct round_trip_case {
  const char* name;
  const codec& kind;
  bytes record;
};

TEST(round_trip, print_then_parse_gives_the_record_again) {
  const round_trip_case cases[] = {
      {"statistics", stats_codec, stats(100)},
      // A second scan before finger-on: the delta wraps.
      {"statistics, second scan at 0", stats_codec, stats(5, {266})},
      {"statistics at their largest", stats_codec, [] {
         bytes record = stats(0, {0, 8, 16, 24, 88, 128, 136, 224, 266, 274}, ~std::uint64_t{0});
         put<std::uint32_t>(record, 233, 0xfffffffe);
         return record;
       }()},
      {"power state", btmspk_codec, pattern(layouts::power_state_size, 4)},
      {"enable counts", enable_counts_codec, [] {
         bytes record = pattern(layouts::counts_size, 1);
         record[0] = 1;
         return record;
       }()},
      {"scan state, -0.5 and one tick", scan_state_codec, scan_state(-32768, 1)},
      {"scan state, smallest step", scan_state_codec, scan_state(1, 1000)},
      {"input report errors", input_report_errors_codec,
       pattern(layouts::input_report_errors_size, 6)},
      {"samples", samples_codec, samples()},
      {"no samples", samples_codec, {}},
      {"assets", assets_codec<1200>, assets(48)},
      {"assets of a long reply", assets_codec<4096>, assets(48)},
      {"assets of a 25-byte reply", assets_codec<25>, assets(1)},
  };
  for (const round_trip_case& c : cases) {
    const std::vector<std::string> lines = printed_lines(c.kind, c.record);
    layouts::parse_fault fault;
    const auto parsed = c.kind.parse(views(lines), fault);
    ASSERT_TRUE(parsed) << c.name << ": line " << fault.line << ": " << fault.message;
    EXPECT_EQ(*parsed, c.record) << c.name;
  }
}

// Many words print alike: a scaled value parses back to one that prints the
// same, whatever the word.
TEST(round_trip, every_scaled_value_parses_back_to_one_printing_alike) {
  std::vector<std::uint32_t> words = {0, 1, 0x7fffffff, 0x80000000, 0xffffffff, 0xffff8000,
                                      0x00ffffff, 0x01000001};
  for (std::uint32_t word = 12345; words.size() < 200; word = word * 1664525 + 1013904223)
    words.push_back(word);
  for (const std::uint32_t word : words) {
    bytes table(layouts::assets_size);
    put(table, 1, word);
    bytes record = scan_state(static_cast<std::int32_t>(word), word);
    for (const auto& [kind, value] : {std::pair{&assets_codec<1200>, &table},
                                      std::pair{&scan_state_codec, &record}}) {
      const std::vector<std::string> lines = printed_lines(*kind, *value);
      layouts::parse_fault fault;
      const auto parsed = kind->parse(views(lines), fault);
      ASSERT_TRUE(parsed) << word << ": line " << fault.line << ": " << fault.message;
      EXPECT_EQ(printed_lines(*kind, *parsed), lines) << word;
    }
  }
}

}  // namespace
