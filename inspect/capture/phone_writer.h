#pragma once

// A capture model into a phone description that, harvested under the same
// time zone, prints the capture again.

#include <string>

#include "inspect/capture/capture_model.h"

namespace inspect {

struct phone_fault {
  std::uint64_t line = 0;
  std::string message;
};

// The description's JSON text; false with `fault` when one phone cannot
// answer as the capture shows (a service missing at one line and present at
// another).
bool write_phone(const capture_model& model, std::string& json, phone_fault& fault);

}  // namespace inspect
