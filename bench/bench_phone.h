#pragma once

// The phone the benchmarks run against: the full-drain phone, timesync
// present, so calendar time is part of every measured line.

#include <array>
#include <cstdint>
#include <vector>

using record_bytes = std::array<std::uint8_t, 48>;

// Loads the full-drain description; ends the process if it cannot.
void load_full_drain();

// Every record both profiler sources deliver, in the order a harvest prints
// them. The phone is loaded afresh afterwards, its logs full again.
const std::vector<record_bytes>& full_drain_records();

// Sends standard output to /dev/null while it lives, fully buffered as on
// a pipe or a file.
class stdout_to_null {
 public:
  stdout_to_null();
  ~stdout_to_null();
  stdout_to_null(const stdout_to_null&) = delete;
  stdout_to_null& operator=(const stdout_to_null&) = delete;

 private:
  int saved_;
};

void register_format_benchmarks();
void register_print_benchmarks();
void register_hexdump_benchmarks();
