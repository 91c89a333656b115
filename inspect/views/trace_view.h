#pragma once

// The capture as Trace Event JSON, for the web-based trace viewers: a track
// per category and component with every record as an event, sensor samples
// as counters, and the press of the statistics record on a track of its
// own, with flow arrows to the checkpoint records that match it.

#include <string>

#include "inspect/views/capture_facts.h"

namespace inspect::views {

// Appends the whole document to `out`.
void write_trace(const capture_facts& facts, std::string& out);

}  // namespace inspect::views
