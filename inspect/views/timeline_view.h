#pragma once

// The capture as one self-contained HTML page with inline SVG (no script,
// no outside font): a lane per component with each record as a tick, the
// press of the statistics record as labelled bars in microseconds, a time
// axis in milliseconds from finger on, and the failure lines under it.

#include <string>

#include "inspect/views/capture_facts.h"

namespace inspect::views {

void write_timeline(const capture_facts& facts, std::string& out);

}  // namespace inspect::views
