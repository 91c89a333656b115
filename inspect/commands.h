#pragma once

// The subcommands of kelvra-inspect; each returns the exit status.

#include "inspect/record_stream.h"

namespace inspect {

// The collector's lines for the records, or with `hex` its "prof-event " lines.
int run_decode(const stream_options& options, bool hex);

// One JSON object per record (JSON Lines).
int run_records(const stream_options& options);

// The views of a whole capture (inspect/views/): Trace Event JSON, a
// summary as text or JSON, an HTML timeline. `harvest` counts from 1.
enum class capture_view { trace, summary, summary_json, timeline };
int run_capture_view(const stream_options& options, capture_view view, std::size_t harvest);

// What the whole-capture subcommands are given.
struct capture_settings {
  std::string input = "-";
  std::optional<int> year;
  std::string output = "-";
};

// A phone description that prints the capture again.
// `additions`, when not "", names a description of what the capture cannot show.
int run_phone(const capture_settings& settings, const std::string& additions);

// The whole capture as one JSON document.
int run_report(const capture_settings& settings);

}  // namespace inspect
