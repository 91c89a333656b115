#pragma once

// A capture model into a phone description that, harvested under the same
// time zone, prints the capture again.

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

#include "inspect/capture/capture_model.h"

namespace inspect {

// A phone description as a structure, its items in the order written:
// additions are merged into it before it is written once.
using phone_description = nlohmann::ordered_json;

struct phone_fault {
  std::uint64_t line = 0;
  std::string message;
};

// The description. False with `fault` when no phone prints the capture: it
// is damaged, its calendar times need more than one clock pair, one service
// answers two ways, the HID matching failed. With `partial` a damaged
// capture gives the phone of its readable part, and `assumed` says what the
// phone takes for what could not be read.
bool describe_phone(const capture_model& model, bool partial, phone_description& phone,
                    phone_fault& fault, std::vector<std::string>& assumed);

// The description's JSON text, as the platform reads it.
std::string phone_text(const phone_description& phone);

// describe_phone() written as text.
bool write_phone(const capture_model& model, bool partial, std::string& json, phone_fault& fault,
                 std::vector<std::string>& assumed);

// Whether a harvest asks the entry of that name ("" for the HID device) for
// the answers listed under `key` (a command, selector or report id).
bool harvest_asks(std::string_view entry_name, std::string_view key);

// The entries a harvest looks for by name, as a description names them.
bool harvest_entry(std::string_view name);

}  // namespace inspect
