#include "inspect/commands.h"
#include "inspect/output_buffer.h"
#include "inspect/utf8.h"
#include "liblog_zol/ZOLProfile.h"
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
      return true;
    }
    decode_profile_record(printer, record.input.bytes.data(), record.clock);
    // The collector prints a line only when it makes a UTF-8 string of it.
    if (valid_utf8(printer.view())) out.line(printer.view());
    return true;
  });
  return out.finish(status);
}

}  // namespace inspect
