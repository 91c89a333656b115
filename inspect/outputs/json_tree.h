#pragma once

// A structure of nlohmann's library written with the house JSON writer, so
// that its numbers and strings read as every other output's. Binary values
// are written as their bytes in hex, a blank after every `subtype` bytes
// where they have a subtype.

#include <nlohmann/json.hpp>

#include "inspect/outputs/json_writer.h"

namespace inspect {

void write_json_tree(json_writer& out, const nlohmann::ordered_json& value);

}  // namespace inspect
