#pragma once

// The capture in brief: the press and its latencies, checked against the
// checkpoint records; the records per category and source; lost and
// repeated sequence numbers; every failure line with what it means; the
// damage; what the capture lacks. Text for people, or one JSON object of
// the same content.

#include <string>

#include "inspect/capture/capture_model.h"
#include "inspect/outputs/summary_printer.h"

namespace inspect {

inline constexpr int summary_schema_version = 3;

void write_summary(const capture_model& model, std::size_t harvest, summary_printer& out);

}  // namespace inspect
