// Names of categories, components and events in the line header: each
// decoder's tables, and decimal digits for what no table names.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

using decoder_names_test = profile_phone_test;

// "category/component/event" as the header names them, without padding.
std::string header_names(std::uint32_t word) {
  const std::string line = record_bytes(word).line();
  std::string names;
  for (const char* key : {" 'category':", " 'component':", " 'event':"}) {
    const std::size_t open = line.find('\'', line.find(key) + std::string(key).size());
    if (!names.empty()) names += '/';
    names += line.substr(open + 1, line.find('\'', open + 1) - open - 1);
  }
  return names;
}

struct named_word {
  std::uint32_t word;  // category, component, event, type: one byte each
  const char* names;
};

constexpr named_word named_words[] = {
    {0x00020100, "execution/workloop/signal"},
    {0x00020200, "execution/workloop/2"},
    {0x00000100, "execution/scheduler/1"},
    {0x01010000, "trace/endpoint/0"},
    {0x02090800, "sensors/9/filter-state"},
    {0x02060c00, "sensors/temperature/12"},
    {0x02011000, "sensors/gyro/trigger-magnitude"},
    {0x03051100, "orbix/5/trigger-latency"},
    {0x03000200, "orbix/orbix/2"},
    {0x04070100, "nimbrel/7/data-out"},
    {0x04000200, "nimbrel/nimbrel/2"},
    {0x05000100, "interrupt/gpio/1"},
    {0x06020200, "uart/uart2/rawdata"},
    {0x06030000, "uart/3/action"},
    {0x07030200, "pkey/latency/ckp_PKEYButtonDown"},
    {0x07030800, "pkey/latency/8"},
    {0x07000200, "pkey/pkey/input-packet"},
    {0x07011400, "pkey/pellam/20"},
    {0x07041300, "pkey/vexa/trigger-clickoff"},
    {0x07050f00, "pkey/5/15"},
    {0x08010200, "control/1/2"},
    {0x09000100, "9/0/1"},
    {0xc8000100, "200/0/1"},
};

TEST_F(decoder_names_test, each_category_names_from_its_own_tables) {
  for (const named_word& row : named_words) {
    SCOPED_TRACE(row.word);
    EXPECT_EQ(header_names(row.word), row.names);
  }
}

}  // namespace
