#pragma once

// A capture model as one JSON document, described by
// inspect/schema/report.schema.json.

#include <string>

#include "inspect/capture/capture_model.h"

namespace inspect {

inline constexpr int report_schema_version = 3;

std::string write_report(const capture_model& model);

}  // namespace inspect
