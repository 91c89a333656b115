#include "quandor/printers.h"
#include "quandor/report_fields.h"

#include <iostream>

namespace {

constexpr std::size_t input_report_errors_size = 60;
constexpr std::size_t label_width = 36;

constexpr counter_field packet_counters[] = {
    {"_total_packets_tmx_received", 40},
    {"_total_packets_sent_to_ap", 44},
    {"_resets_since_boot", 48, true},
    {"_packet_drops", 0},
    {"_pt_invalid_packets(debug)", 56},
    {"_duplicate_packet_drops", 52},
    {"_chksum_errors", 36},
};

// The statuses are shown indented under their total.
constexpr counter_field status_counters[] = {
    {"_total_status_errors", 4},
    {"  _status_IOReturnError", 8},
    {"  _status_IOReturnNotReady", 12},
    {"  _status_IOReturnNotPermitted", 16},
    {"  _status_IOReturnUnsupported", 20},
    {"  _status_IOReturnBadArgument", 24},
    {"  _status_IOReturnIOError", 28},
    {"  _status_IOReturnInternalError", 32},
};

}  // namespace

void print_input_report_errors(const std::string& service, std::uint32_t,
                               std::uint8_t* buffer, std::uint64_t length) {
  if (buffer == nullptr || length == 0) return;
  const byte_reader record(buffer, input_report_errors_size);
  std::cout << "=========== (input report) error stats for <service_id>: "
            << service << "===========" << std::endl;
  print_counters(record, packet_counters, label_width, "# ");
  std::cout << std::endl;
  print_counters(record, status_counters, label_width, "# ");
  std::cout << std::endl;
}
