// decode and records: the records of any input, as they stream past.

#include "inspect/commands/commands.h"
#include "inspect/input/utf8.h"
#include "inspect/outputs/output_buffer.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/json_printer.h"
#include "liblog_zol/text_printer.h"

namespace inspect {

int run_decode(const stream_options& options, bool hex) {
  output_buffer out(stdout);
  zol::text_printer printer;
  char hex_line[11 + 2 * profile_record_size] = "prof-event ";
  const int status = for_each_record(options, [&](const stream_record& record) {
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

int run_records(const stream_options& options) {
  output_buffer out(stdout);
  zol::json_printer printer;
  const int status = for_each_record(options, [&](const stream_record& record) {
    zol::record_origin origin;
    origin.ordinal = record.ordinal;
    printer.set_origin(origin);
    printer.set_zone(record.zone);
    decode_profile_record(printer, record.input.bytes.data(), record.clock);
    out.line(printer.view());
  });
  return out.finish(status);
}

}  // namespace inspect
