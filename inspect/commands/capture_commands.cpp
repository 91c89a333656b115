// The subcommands that read a whole capture into its model: the views, the
// report and the phone.

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "inspect/commands/commands.h"
#include "inspect/outputs/output_buffer.h"
#include "inspect/outputs/phone_additions.h"
#include "inspect/outputs/phone_writer.h"
#include "inspect/outputs/report_writer.h"
#include "inspect/outputs/summary_view.h"
#include "inspect/outputs/timeline_view.h"
#include "inspect/outputs/trace_view.h"

namespace inspect {
namespace {

// The model, or status 2 after the fault line.
bool read(const capture_settings& settings, capture_model& model) {
  input_fault fault;
  if (read_capture(settings.input, settings.reading, model, fault)) return true;
  std::fprintf(stderr, "%s\n", fault_line(fault).c_str());
  return false;
}

int written(int status, const capture_model& model) {
  if (status != 0) return status;
  return model.lost ? 1 : 0;
}

}  // namespace

int run_capture_view(const capture_settings& settings, capture_view view) {
  capture_model model;
  if (!read(settings, model)) return 2;
  const std::size_t harvests = model.harvests.size();
  if (settings.harvest == 0 || settings.harvest > harvests) {
    std::fprintf(stderr, "kelvra-inspect: %s: the capture holds %zu harvest%s; there is no %zu\n",
                 input_label(settings.input).c_str(), harvests, harvests == 1 ? "" : "s",
                 settings.harvest);
    return 2;
  }
  const std::size_t harvest = settings.harvest - 1;
  std::string text;
  switch (view) {
    case capture_view::trace: write_trace(model, harvest, text); break;
    case capture_view::summary: write_summary(model, harvest, *text_summary_printer(text)); break;
    case capture_view::summary_json: write_summary(model, harvest, *json_summary_printer(text)); break;
    case capture_view::timeline: write_timeline(model, harvest, text); break;
  }
  if (!text.empty() && text.back() != '\n') text += '\n';
  return written(write_output(settings.output, text), model);
}

int run_report(const capture_settings& settings) {
  capture_model model;
  if (!read(settings, model)) return 2;
  return written(write_output(settings.output, write_report(model)), model);
}

int run_phone(const capture_settings& settings, const std::string& additions, bool partial) {
  capture_model model;
  if (!read(settings, model)) return 2;
  phone_description description;
  phone_fault phone;
  std::vector<std::string> assumed;
  if (!describe_phone(model, partial, description, phone, assumed)) {
    std::fprintf(stderr, "%s\n",
                 fault_line({settings.input, phone.line != 0 ? "line " + std::to_string(phone.line) : "",
                             "no phone prints this capture: " + phone.message})
                     .c_str());
    return 2;
  }
  for (const std::string& assumption : assumed)
    std::fprintf(stderr, "kelvra-inspect: %s: phone assumes: %s\n",
                 input_label(settings.input).c_str(), assumption.c_str());
  if (!additions.empty()) {
    std::ifstream file(additions, std::ios::binary);
    if (!file.is_open()) {
      std::fprintf(stderr, "%s\n", fault_line({additions, "", "cannot be opened"}).c_str());
      return 2;
    }
    std::ostringstream text;
    text << file.rdbuf();
    addition_fault added;
    if (!add_to_phone(description, text.str(), added)) {
      std::fprintf(stderr, "%s\n", fault_line({additions, added.where, added.message}).c_str());
      return 2;
    }
  }
  return written(write_output(settings.output, phone_text(description)), model);
}

}  // namespace inspect
