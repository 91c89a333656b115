// decode and records: the records of any input, as they stream past.

#include <unistd.h>

#include "inspect/capture/capture_reader.h"
#include "inspect/commands/commands.h"
#include "inspect/outputs/record_rows.h"
#include "inspect/input/utf8.h"
#include "inspect/outputs/output_buffer.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/json_printer.h"
#include "liblog_zol/text_printer.h"

namespace inspect {
namespace {

// The records of the input's one capture, each to `each`.
int each_record(const stream_options& options,
                const std::function<void(const stream_record&)>& each) {
  single_input input;
  if (!open_single(options.input, options.member, options.archive, stream_forms, input)) return 2;
  stream_options named = options;
  named.input = input.capture.label;
  const int status = for_each_record(std::move(input.capture.source), named, stderr, each);
  return finish_single(input, status);
}

}  // namespace

int run_decode(const stream_options& options, bool hex) {
  output_buffer out(stdout);
  zol::text_printer printer;
  char hex_line[11 + 2 * profile_record_size] = "prof-event ";
  const int status = each_record(options, [&](const stream_record& record) {
    if (hex) {
      write_profile_hex(hex_line + 11, record.input.bytes.data());
      out.line({hex_line, sizeof hex_line});
      return;
    }
    printer.set_zone(record.zone);
    decode_profile_record(printer, record.input.bytes.data(), record.clock);
    // The collector prints a line only when it makes a UTF-8 string of it.
    if (valid_utf8(printer.view())) out.line(printer.view());
  });
  return out.finish(status);
}

namespace {

// A harvest capture is read whole, so that each record's row says its
// source and the tables' rows are the same.
int harvest_records(opened_input input, const stream_options& options) {
  capture_options reading;
  reading.years = options.years;
  reading.zone = options.zone;
  reading.timesync = options.timesync;
  if (options.progress && isatty(fileno(stderr))) reading.progress = stderr;
  capture_model model;
  input_fault fault;
  if (!read_capture(std::move(input), options.input, reading, model, fault)) {
    std::fprintf(stderr, "%s\n", fault_line(fault).c_str());
    return 2;
  }
  output_buffer out(stdout);
  std::uint64_t ordinal = 0;
  for (std::size_t h = 0; h < model.harvests.size(); ++h)
    write_record_rows(model, h, {}, ordinal, [&](std::string_view row) { out.line(row); });
  return out.finish(model.lost ? 1 : 0);
}

}  // namespace

int run_records(const stream_options& options) {
  single_input single;
  if (!open_single(options.input, options.member, options.archive, stream_forms, single)) return 2;
  stream_options named = options;
  named.input = single.capture.label;
  std::optional<opened_input> input = open_stream(std::move(single.capture.source), named, stderr);
  if (!input) return finish_single(single, 2);
  if (input->form == input_form::harvest)
    return finish_single(single, harvest_records(std::move(*input), named));
  output_buffer out(stdout);
  zol::json_printer printer;
  const int status = for_each_record(std::move(*input), named, stderr, [&](const stream_record& record) {
    zol::record_origin origin;
    origin.ordinal = record.ordinal;
    printer.set_origin(origin);
    printer.set_zone(record.zone);
    decode_profile_record(printer, record.input.bytes.data(), record.clock);
    out.line(printer.view());
  });
  return finish_single(single, out.finish(status));
}

}  // namespace inspect
