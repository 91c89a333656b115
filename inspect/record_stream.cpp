#include "inspect/record_stream.h"

#include <unistd.h>

#include <cstdio>

#include "liblog_zol/profile_record.h"

namespace inspect {

int for_each_record(const stream_options& options,
                    const std::function<bool(const stream_record&)>& each) {
  input_fault fault;
  std::unique_ptr<byte_source> source = open_file(options.input, fault);
  if (!source) {
    std::fprintf(stderr, "%s\n", fault_line(fault).c_str());
    return 2;
  }
  return for_each_record(std::move(source), options, stderr, each);
}

int for_each_record(std::unique_ptr<byte_source> source, const stream_options& options,
                    std::FILE* messages, const std::function<bool(const stream_record&)>& each) {
  input_options input_settings;
  input_settings.form = options.form;
  input_settings.progress = options.progress && isatty(fileno(messages));
  input_settings.messages = messages;
  const std::unique_ptr<record_input> records =
      open_records(std::move(source), options.input, input_settings);

  zol::no_clock none;
  std::optional<zol::fixed_clock> fixed;
  if (options.timesync) fixed.emplace(*options.timesync);
  capture_clock recovered(options.year);

  input_record record;
  std::uint64_t ordinal = 0;
  while (records->next(record)) {
    zol::clock_source* clock = &none;
    if (fixed) {
      clock = &*fixed;
    } else if (records->form() == input_form::harvest) {
      std::string clock_fault;
      if (!recovered.next_record(zol::profile_record(record.bytes.data()).timestamp(),
                                 record.calendar_text, clock_fault)) {
        std::fprintf(messages, "%s\n",
                     fault_line({options.input, "line " + std::to_string(record.line),
                                 clock_fault})
                         .c_str());
        return 2;
      }
      clock = &recovered;
    }
    if (!each({record, ordinal++, *clock})) return 2;
  }
  if (records->fault()) {
    std::fprintf(messages, "%s\n", fault_line(*records->fault()).c_str());
    return 2;
  }
  return 0;
}

}  // namespace inspect
