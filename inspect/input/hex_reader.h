#pragma once

// "prof-event " lines: 96 hex digits each, the record's bytes in order.

#include <memory>
#include <string>
#include <string_view>

#include "inspect/input/chunk_buffer.h"
#include "inspect/input/record_input.h"

namespace inspect {

// A line starting "prof-event " into its record.
bool parse_hex_line(std::string_view line, input_record& record, std::string& fault);

std::unique_ptr<record_input> make_hex_reader(std::unique_ptr<chunk_buffer> input,
                                              std::string file);

}  // namespace inspect
