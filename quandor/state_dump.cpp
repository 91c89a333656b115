#include "quandor/hexdump.h"
#include "quandor/printers.h"
#include "quandor/report_fields.h"

#include <iomanip>
#include <iostream>

namespace {

constexpr std::uint32_t dump_state = 0xd0;
constexpr std::uint32_t dump_enable_counts = 0xd1;
constexpr std::uint32_t get_stats = 0xd7;
constexpr std::uint32_t get_assets = 0xd8;

constexpr std::size_t scan_state_size = 40;
constexpr std::size_t power_state_size = 12;
constexpr std::size_t counts_size = 9;
constexpr std::size_t sample_size = 12;

constexpr std::size_t scan_label_width = 31;
constexpr std::size_t state_label_width = 14;
constexpr double seconds_per_scan_tick = 2.56;

constexpr counter_field power_state_fields[] = {
    {"power state", 0},
    {"AP request", 4},
    {"ZOL request", 8},
};

// Not in record order: the application processor's count comes first.
constexpr counter_field reference_fields[] = {
    {"AP ref", 5},
    {"ZOL ref", 1},
};

void print_scan_state(const std::uint8_t* buffer) {
  const byte_reader record(buffer, scan_state_size);
  const auto label = [](std::string_view caption) {
    return padded_label(caption, scan_label_width, ": ");
  };
  const std::uint32_t lofi_reads = record.u32(24);
  const std::uint32_t lofi_accepted = record.u32(36);
  std::cout << label("scanState") << record.u32(28) << std::endl;
  std::cout << label("nextScan in") << record.u32(32) * seconds_per_scan_tick
            << " sec" << std::endl;
  std::cout << label("numLoFiReads") << lofi_reads << std::endl;
  std::cout << label("numFramesSinceOnWrist") << record.u32(20) << std::endl;
  std::cout << label("numLoFiScans_Accepted") << lofi_accepted << std::endl;
  std::cout << label("numLoFiScans_Rejected")
            << lofi_reads - lofi_accepted << std::endl;
  std::cout << std::endl;
  std::cout << label("waitNumFramesAfterSuccess") << record.u32(8) << std::endl;
  std::cout << label("motionTriggerNumFrames") << record.u32(4) << std::endl;
  std::cout << label("accelVarThreshold")
            << static_cast<float>(record.i32(0)) * fixed_point_scale << std::endl;
  std::cout << std::endl;
}

void print_power_state(const std::string& service, const std::uint8_t* buffer) {
  std::cout << service << " State" << std::endl;
  print_counters(byte_reader(buffer, power_state_size), power_state_fields,
                 state_label_width, ": ");
}

void print_counts(std::uint32_t command, const std::uint8_t* buffer) {
  const byte_reader record(buffer, counts_size);
  std::cout << (command == dump_state ? "PKEY MCLK Counts" : "PKEY PellamEN Counts")
            << std::endl;
  std::cout << padded_label("Enable", state_label_width, ": ")
            << (record.u8(0) != 0) << std::endl;
  print_counters(record, reference_fields, state_label_width, ": ");
}

void print_samples(const std::uint8_t* buffer, std::uint64_t length) {
  const std::uint64_t count = length / sample_size;
  const byte_reader samples(buffer, count * sample_size);
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::size_t entry = i * sample_size;
    std::cout << "data:" << std::hex << std::setw(2) << samples.u32(entry + 8)
              << std::dec << " timestamp:" << samples.u64(entry) << std::endl;
  }
}

}  // namespace

void print_state_dump(const std::string& service, std::uint32_t command,
                      std::uint8_t* buffer, std::uint64_t length) {
  if (buffer == nullptr || length == 0) return;
  if (service == "varsium") {
    print_scan_state(buffer);
  } else if (service == "zol-button") {
    if (command == get_stats) {
      print_pkey_stats(service, command, buffer, length);
    } else if (command == dump_state || command == dump_enable_counts) {
      print_counts(command, buffer);
    } else if (command == get_assets) {
      print_haptic_assets(service, command, buffer, length);
    } else {
      hexdump(buffer, length, nullptr);
    }
  } else if ((service == "lyn" || service == "btmspk") && command == dump_state) {
    print_power_state(service, buffer);
  } else if (service == "mux" && command == dump_state) {
    print_samples(buffer, length);
  } else {
    hexdump(buffer, length, nullptr);
  }
}
