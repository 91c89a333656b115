// The subcommands trace, summary and timeline: read the whole capture into
// its model, gather the facts once, lay them out.

#include <cstdio>
#include <string>

#include "inspect/capture/capture_reader.h"
#include "inspect/commands.h"
#include "inspect/output_buffer.h"
#include "inspect/views/capture_facts.h"
#include "inspect/views/summary_view.h"
#include "inspect/views/timeline_view.h"
#include "inspect/views/trace_view.h"

namespace inspect {

int run_capture_view(const stream_options& options, capture_view view, std::size_t harvest) {
  capture_model model;
  input_fault fault;
  capture_options reading;
  reading.year = options.year;
  if (!read_capture(options.input, reading, model, fault)) {
    std::fprintf(stderr, "%s\n", fault_line(fault).c_str());
    return 2;
  }
  const std::size_t harvests = model.harvests.size();
  if (harvest == 0 || (harvest > 1 && harvest > harvests)) {
    std::fprintf(stderr, "kelvra-inspect: %s: the capture holds %zu harvest%s; there is no %zu\n",
                 options.input == "-" ? "standard input" : options.input.c_str(), harvests,
                 harvests == 1 ? "" : "s", harvest);
    return 2;
  }
  views::fact_settings settings;
  settings.timesync = options.timesync;
  settings.harvest = harvest - 1;
  const views::capture_facts facts = views::gather_facts(model, settings);

  std::string text;
  switch (view) {
    case capture_view::trace: views::write_trace(facts, text); break;
    case capture_view::summary: views::write_summary_text(facts, options.input, text); break;
    case capture_view::summary_json: views::write_summary_json(facts, options.input, text); break;
    case capture_view::timeline: views::write_timeline(facts, text); break;
  }
  if (!text.empty() && text.back() == '\n') text.pop_back();
  output_buffer out(stdout);
  out.line(text);
  return out.finish(0);
}

}  // namespace inspect
