#pragma once

// A capture of kelvra --harvest (standard output alone, or with standard
// error merged) into its model. A capture that cannot have come from the
// collector is refused with the line and the fault.

#include <optional>
#include <string>
#include <string_view>

#include "inspect/capture/capture_model.h"
#include "inspect/input/record_input.h"

namespace inspect {

struct capture_options {
  std::optional<int> year;  // of the calendar texts; else the latest that fits
};

// `file` names the capture in the fault; "-" is standard input; gzip too.
bool read_capture(const std::string& file, const capture_options& options,
                  capture_model& model, input_fault& fault);

bool read_capture_text(std::string_view text, const std::string& file,
                       const capture_options& options, capture_model& model,
                       input_fault& fault);

}  // namespace inspect
