#pragma once

// Capture models built record by record, for the tests of the facts and of
// the outputs that read them.

#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <string>
#include <vector>

#include "inspect/capture/capture_model.h"

namespace inspect::test {

template <class T>
inline void put_le(std::uint8_t* at, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) at[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// The statistics record, written at the offsets the collector's reply has.
struct stats_record {
  std::array<std::uint8_t, 282> bytes{};
  stats_record& u64(std::size_t offset, std::uint64_t value) {
    put_le(bytes.data() + offset, value);
    return *this;
  }
  stats_record& u32(std::size_t offset, std::uint32_t value) {
    put_le(bytes.data() + offset, value);
    return *this;
  }
};

// Case names for the test list: "a late record" -> "a_late_record".
template <class Case>
inline std::string case_name(const testing::TestParamInfo<Case>& p) {
  std::string name = p.param.what;
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  return name;
}

constexpr std::uint32_t pkey_latency = 0x07030003;  // category 7, component 3, type 3

inline std::uint32_t checkpoint_word(std::uint32_t id) { return pkey_latency | (id << 8); }

inline profile_entry record(std::uint32_t type_word, std::uint32_t sequence, std::uint64_t timestamp,
                     std::uint32_t first_word = 0) {
  profile_entry entry;
  put_le(entry.bytes.data(), type_word);
  put_le(entry.bytes.data() + 4, sequence);
  put_le(entry.bytes.data() + 8, timestamp);
  put_le(entry.bytes.data() + 16, first_word);
  entry.line = 100 + sequence;
  return entry;
}

// One click: finger on at 10 ms, down at 50 ms, up at 150 ms, assets 600
// and 580 µs after the edges, finger off at 300 ms.
inline stats_record one_click() {
  stats_record s;
  s.u64(0, 10'000).u64(8, 300'000).u64(16, 11'000).u64(24, 40'000);
  s.u64(88, 50'000).u64(96, 150'000);
  s.u64(136, 50'600).u64(144, 150'580);
  s.u64(184, 600).u64(192, 580);
  s.u32(233, 1 << 1);  // click count 1: the count sits above bit 0
  return s;
}

// Checkpoints at the times of one_click(), the button-down one moved.
inline std::vector<profile_entry> checkpoints(std::int64_t down_offset) {
  const auto down = static_cast<std::uint64_t>(50'000 + down_offset);
  return {record(checkpoint_word(0), 1, 10'000, 0), record(checkpoint_word(5), 2, 11'000, 5),
          record(checkpoint_word(2), 3, down, 2),   record(checkpoint_word(7), 4, 50'600, 7),
          record(checkpoint_word(3), 5, 150'000, 3), record(checkpoint_word(7), 6, 150'580, 7),
          record(checkpoint_word(1), 7, 300'000, 1)};
}

inline capture_model model_of(const stats_record* stats, std::vector<profile_entry> profile) {
  capture_model model;
  harvest_model& h = model.harvests.emplace_back();
  if (stats) {
    h.stats.emplace();
    h.stats->printed = true;
    h.stats->record = stats->bytes;
  }
  h.profile_banner = true;
  h.profile = std::move(profile);
  gather_facts(model);
  return model;
}

}  // namespace inspect::test
