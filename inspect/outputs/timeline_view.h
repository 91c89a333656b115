#pragma once

// A harvest as one self-contained HTML page with inline SVG (no script, no
// outside font): a lane per component with each record as a tick, the press
// of the statistics record as labelled bars in microseconds, a time axis in
// milliseconds from finger on, the damage and the failure lines under it.

#include <string>

#include "inspect/capture/capture_model.h"

namespace inspect {

void write_timeline(const capture_model& model, std::size_t harvest, std::string& out);

}  // namespace inspect
