#pragma once

// A harvest as Trace Event JSON, for the web-based trace viewers: a track
// per category and component with every record as an event, sensor samples
// as counters, and the press of the statistics record on a track of its
// own, with flow arrows to the checkpoint records that match it. Every time
// is at least 0 and far below 2^53 µs: records too far from the press for
// its axis stand on a track of their own, with their times in their args.

#include <string>

#include "inspect/capture/capture_model.h"

namespace inspect {

// The version of the document's otherData.
inline constexpr int trace_schema_version = 3;

// Appends the whole document to `out`.
void write_trace(const capture_model& model, std::size_t harvest, std::string& out);

}  // namespace inspect
