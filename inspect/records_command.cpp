#include "inspect/commands.h"
#include "inspect/output_buffer.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/json_printer.h"

namespace inspect {

int run_records(const stream_options& options) {
  output_buffer out(stdout);
  zol::json_printer printer;
  const int status = for_each_record(options, [&](const stream_record& record) {
    zol::record_origin origin;
    origin.ordinal = record.ordinal;
    printer.set_origin(origin);
    decode_profile_record(printer, record.input.bytes.data(), record.clock);
    out.line(printer.view());
    return true;
  });
  return out.finish(status);
}

}  // namespace inspect
