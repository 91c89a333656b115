#pragma once

// Both presses of a comparison drawn as one inline SVG: on one time axis
// from finger on, B under A, then each latency of A above B's, scaled to
// the longer, with the difference labelled.

#include <string>

#include "inspect/compare/comparison.h"

namespace inspect {

// Appends the <svg> element; draws what presses there are.
void write_press_picture(const comparison& c, std::string& out);

}  // namespace inspect
