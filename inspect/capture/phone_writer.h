#pragma once

// A capture model into a phone description that, harvested under the same
// time zone, prints the capture again.

#include <string>
#include <string_view>

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

// Whether a harvest asks the entry of that name ("" for the HID device) for
// the answers listed under `key` (a command, selector or report id).
bool harvest_asks(std::string_view entry_name, std::string_view key);

}  // namespace inspect
