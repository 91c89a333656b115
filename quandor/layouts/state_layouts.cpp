#include <algorithm>
#include <ostream>
#include <sstream>

#include "quandor/layouts/field_rows.h"

namespace layouts {
namespace {

constexpr auto u32 = value_form::u32;

constexpr field_row power_state_rows[] = {
    {"power state", u32, 0, "power_state"},
    {"AP request", u32, 4, "ap_request"},
    {"ZOL request", u32, 8, "zol_request"},
};
constexpr line_layout power_state_layout{"power state", 14, ": ", power_state_rows};
constexpr std::string_view power_state_title = " State";

constexpr field_row counts_rows[] = {
    {"Enable", value_form::flag, 0, "enable"},
    // Not in record order: the application processor's count comes first.
    {"AP ref", u32, 5, "ap_ref"},
    {"ZOL ref", u32, 1, "zol_ref"},
};
constexpr line_layout counts_layout{"counts", 14, ": ", counts_rows};

constexpr field_row scan_state_rows[] = {
    {"scanState", u32, 28, "scan_state"},
    {"nextScan in", value_form::scan_ticks, 32, "next_scan_in", " sec", {}, 0, "next_scan_ticks"},
    {"numLoFiReads", u32, 24, "num_lofi_reads"},
    {"numFramesSinceOnWrist", u32, 20, "num_frames_since_on_wrist"},
    {"numLoFiScans_Accepted", u32, 36, "num_lofi_scans_accepted"},
    {"numLoFiScans_Rejected", value_form::u32_less, 24, "num_lofi_scans_rejected", {}, {}, 36},
    {""},
    {"waitNumFramesAfterSuccess", u32, 8, "wait_num_frames_after_success"},
    {"motionTriggerNumFrames", u32, 4, "motion_trigger_num_frames"},
    {"accelVarThreshold", value_form::fixed_single, 0, "accel_var_threshold", {}, {}, 0,
     "accel_var_threshold_raw"},
    {""},
};
static_assert(line_count(scan_state_rows) == scan_state_lines);
constexpr line_layout scan_state_layout{"scan state", 31, ": ", scan_state_rows};

constexpr std::string_view errors_title_start =
    "=========== (input report) error stats for <service_id>: ";
constexpr std::string_view errors_title_end = "===========";

constexpr field_row input_report_error_rows[] = {
    {"_total_packets_tmx_received", u32, 40, "total_packets_tmx_received"},
    {"_total_packets_sent_to_ap", u32, 44, "total_packets_sent_to_ap"},
    {"_resets_since_boot", value_form::i32, 48, "resets_since_boot"},
    {"_packet_drops", u32, 0, "packet_drops"},
    {"_pt_invalid_packets(debug)", u32, 56, "pt_invalid_packets"},
    {"_duplicate_packet_drops", u32, 52, "duplicate_packet_drops"},
    {"_chksum_errors", u32, 36, "chksum_errors"},
    {""},
    // The statuses are shown indented under their total.
    {"_total_status_errors", u32, 4, "total_status_errors"},
    {"  _status_IOReturnError", u32, 8, "status_io_return_error"},
    {"  _status_IOReturnNotReady", u32, 12, "status_io_return_not_ready"},
    {"  _status_IOReturnNotPermitted", u32, 16, "status_io_return_not_permitted"},
    {"  _status_IOReturnUnsupported", u32, 20, "status_io_return_unsupported"},
    {"  _status_IOReturnBadArgument", u32, 24, "status_io_return_bad_argument"},
    {"  _status_IOReturnIOError", u32, 28, "status_io_return_io_error"},
    {"  _status_IOReturnInternalError", u32, 32, "status_io_return_internal_error"},
    {""},
};
static_assert(line_count(input_report_error_rows) + 1 == input_report_errors_lines);
constexpr line_layout input_report_errors_layout{"input report errors", 36, "# ",
                                                 input_report_error_rows};

constexpr field_row sample_rows[] = {
    {"data:", value_form::hex_u32, 8, "data"},
    {" timestamp:", value_form::u64, 0, "timestamp"},
};

std::string_view counts_title(std::uint32_t command) {
  for (const counts_heading& heading : counts_headings)
    if (heading.command == command) return heading.text;
  return std::end(counts_headings)[-1].text;
}

// The rows after a heading line, then the print of the rebuilt record.
template <std::size_t size, class Print>
bool parse_after_heading(const line_layout& layout, std::span<const std::string_view> lines,
                         std::array<std::uint8_t, size>& record, Print print,
                         parse_fault& fault) {
  if (!parse_rows(layout, lines.subspan(1), 1, record, fault)) return false;
  std::ostringstream printed;
  print(printed);
  return prints_back(layout, lines, 1, printed.str(), fault);
}

std::vector<named_field> fields_of(std::span<const field_row> rows,
                                   std::span<const std::uint8_t> record) {
  std::vector<named_field> fields;
  add_fields(rows, byte_reader(record), 0, std::nullopt, fields);
  return fields;
}

}  // namespace

void write_power_state(std::ostream& out, std::string_view service,
                       std::span<const std::uint8_t> record) {
  out << service << power_state_title << std::endl;
  write_rows(out, power_state_layout, byte_reader(record));
}

std::optional<power_state_block> parse_power_state(std::span<const std::string_view> lines,
                                                   parse_fault& fault) {
  if (!has_lines(power_state_layout.what, lines, power_state_lines, fault)) return std::nullopt;
  const auto* service = std::find(std::begin(power_state_services),
                                  std::end(power_state_services),
                                  framed(lines[0], {}, power_state_title).value_or(""));
  if (service == std::end(power_state_services)) {
    fault = {0, "power state heading names no speaker service"};
    return std::nullopt;
  }
  power_state_block block{*service, {}};
  const auto print = [&](std::ostream& out) {
    write_power_state(out, block.service, block.record);
  };
  if (!parse_after_heading(power_state_layout, lines, block.record, print, fault))
    return std::nullopt;
  return block;
}

std::vector<named_field> power_state_fields(std::span<const std::uint8_t> record) {
  return fields_of(power_state_rows, record);
}

void write_counts(std::ostream& out, std::uint32_t command, std::span<const std::uint8_t> record) {
  out << counts_title(command) << std::endl;
  write_rows(out, counts_layout, byte_reader(record));
}

std::optional<counts_block> parse_counts(std::span<const std::string_view> lines,
                                         parse_fault& fault) {
  if (!has_lines(counts_layout.what, lines, counts_lines, fault)) return std::nullopt;
  const auto* heading =
      std::find_if(std::begin(counts_headings), std::end(counts_headings),
                   [&](const counts_heading& row) { return row.text == lines[0]; });
  if (heading == std::end(counts_headings)) {
    fault = {0, "counts heading names no counts command"};
    return std::nullopt;
  }
  counts_block block{heading->command, {}};
  const auto print = [&](std::ostream& out) { write_counts(out, block.command, block.record); };
  if (!parse_after_heading(counts_layout, lines, block.record, print, fault))
    return std::nullopt;
  return block;
}

std::vector<named_field> counts_fields(std::span<const std::uint8_t> record) {
  return fields_of(counts_rows, record);
}

void write_scan_state(std::ostream& out, std::span<const std::uint8_t> record) {
  write_rows(out, scan_state_layout, byte_reader(record));
}

std::optional<std::array<std::uint8_t, scan_state_size>> parse_scan_state(
    std::span<const std::string_view> lines, parse_fault& fault) {
  std::array<std::uint8_t, scan_state_size> record{};
  if (!has_lines(scan_state_layout.what, lines, scan_state_lines, fault) ||
      !parse_rows(scan_state_layout, lines, 0, record, fault))
    return std::nullopt;
  std::ostringstream printed;
  write_scan_state(printed, record);
  if (!prints_back(scan_state_layout, lines, 0, printed.str(), fault)) return std::nullopt;
  return record;
}

std::vector<named_field> scan_state_fields(std::span<const std::uint8_t> record) {
  return fields_of(scan_state_rows, record);
}

void write_input_report_errors(std::ostream& out, std::string_view service,
                               std::span<const std::uint8_t> record) {
  out << errors_title_start << service << errors_title_end << std::endl;
  write_rows(out, input_report_errors_layout, byte_reader(record));
}

std::optional<input_report_errors_block> parse_input_report_errors(
    std::span<const std::string_view> lines, parse_fault& fault) {
  if (!has_lines(input_report_errors_layout.what, lines, input_report_errors_lines, fault))
    return std::nullopt;
  const auto service = framed(lines[0], errors_title_start, errors_title_end);
  if (!service) {
    fault = {0, "input report errors wants its heading"};
    return std::nullopt;
  }
  input_report_errors_block block{std::string(*service), {}};
  const auto print = [&](std::ostream& out) {
    write_input_report_errors(out, block.service, block.record);
  };
  if (!parse_after_heading(input_report_errors_layout, lines, block.record, print, fault))
    return std::nullopt;
  return block;
}

std::vector<named_field> input_report_errors_fields(std::span<const std::uint8_t> record) {
  return fields_of(input_report_error_rows, record);
}

void write_samples(std::ostream& out, std::span<const std::uint8_t> reply) {
  const byte_reader samples(reply);
  for (std::size_t entry = 0; entry < reply.size() / sample_size; ++entry) {
    write_entry(out, sample_rows, samples, entry * sample_size);
    out << std::endl;
  }
}

std::optional<std::vector<std::uint8_t>> parse_samples(std::span<const std::string_view> lines,
                                                       parse_fault& fault) {
  std::vector<std::uint8_t> reply(lines.size() * sample_size);
  for (std::size_t entry = 0; entry < lines.size(); ++entry) {
    std::string message;
    if (!parse_entry("samples", sample_rows, lines[entry], reply, entry * sample_size, message)) {
      fault = {entry, std::move(message)};
      return std::nullopt;
    }
  }
  std::ostringstream printed;
  write_samples(printed, reply);
  if (const auto at = first_difference(lines, printed.str())) {
    fault = {*at, "samples line does not print back the same"};
    return std::nullopt;
  }
  return reply;
}

std::vector<named_field> samples_fields(std::span<const std::uint8_t> reply) {
  std::vector<named_field> fields;
  const byte_reader samples(reply);
  for (std::size_t entry = 0; entry < reply.size() / sample_size; ++entry)
    add_fields(sample_rows, samples, entry * sample_size, entry, fields);
  return fields;
}

bool prints_power_state(std::string_view service) noexcept {
  for (const std::string_view name : power_state_services)
    if (service == name) return true;
  return false;
}

std::vector<named_field> state_dump_fields(std::string_view service, std::span<const std::uint8_t> record) {
  return prints_power_state(service) ? power_state_fields(record) : counts_fields(record);
}

}  // namespace layouts
