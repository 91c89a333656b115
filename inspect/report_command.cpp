#include <cstdio>

#include "inspect/capture/capture_reader.h"
#include "inspect/capture/report_writer.h"
#include "inspect/commands.h"
#include "inspect/output_buffer.h"

namespace inspect {

int run_report(const capture_settings& settings) {
  capture_model model;
  input_fault fault;
  if (!read_capture(settings.input, {settings.year}, model, fault)) {
    std::fprintf(stderr, "%s\n", fault_line(fault).c_str());
    return 2;
  }
  return write_output(settings.output, write_report(model, settings.input));
}

}  // namespace inspect
