#pragma once

// The whole capture as one JSON document (schema: inspect/schema/report.schema.json).

#include <string>

#include "inspect/capture/capture_model.h"

namespace inspect {

std::string write_report(const capture_model& model, const std::string& capture_name);

// "zol-button 0xd0", "HID device", ...: what a request asks of whom.
std::string_view request_name(request about);

}  // namespace inspect
