#include "quandor/printers.h"

#include "test_record.h"

namespace {

TEST(input_report_errors, heading_then_counters_in_print_order) {
  auto buffer = reply_buffer();
  for (std::int32_t i = 0; i < 15; ++i) put(buffer, 4 * i, i + 1);
  put<std::int32_t>(buffer, 48, -2);
  EXPECT_EQ(stdout_of([&] { print_input_report_errors("zol-button", 0xe3, buffer.data(), 60); }),
            "=========== (input report) error stats for <service_id>: zol-button===========\n"
            "_total_packets_tmx_received         # 11\n"
            "_total_packets_sent_to_ap           # 12\n"
            "_resets_since_boot                  # -2\n"
            "_packet_drops                       # 1\n"
            "_pt_invalid_packets(debug)          # 15\n"
            "_duplicate_packet_drops             # 14\n"
            "_chksum_errors                      # 10\n"
            "\n"
            "_total_status_errors                # 2\n"
            "  _status_IOReturnError             # 3\n"
            "  _status_IOReturnNotReady          # 4\n"
            "  _status_IOReturnNotPermitted      # 5\n"
            "  _status_IOReturnUnsupported       # 6\n"
            "  _status_IOReturnBadArgument       # 7\n"
            "  _status_IOReturnIOError           # 8\n"
            "  _status_IOReturnInternalError     # 9\n"
            "\n");
  EXPECT_EQ(stdout_of([&] { print_input_report_errors("x", 0xe3, buffer.data(), 0); }), "");
}

}  // namespace
