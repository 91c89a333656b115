#pragma once

// A harvest capture: the profile lines' binary-data, everything else passed over.

#include <memory>
#include <string>
#include <string_view>

#include "inspect/input/chunk_buffer.h"
#include "inspect/input/record_input.h"

namespace inspect {

// A line starting "{  'category':" into its record and calendar text.
bool parse_profile_line(std::string_view line, input_record& record, std::string& fault);

std::unique_ptr<record_input> make_harvest_reader(std::unique_ptr<chunk_buffer> input,
                                                  std::string file);

}  // namespace inspect
