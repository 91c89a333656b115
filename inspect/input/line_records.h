#pragma once

// The records of a line form: every line that starts a certain way holds one
// record, every other line is passed over.

#include <memory>
#include <string>
#include <string_view>

#include "inspect/input/chunk_buffer.h"
#include "inspect/input/record_input.h"

namespace inspect {

// Fills `record` from a line that starts with the form's start, or says
// what is wrong with it in `fault`.
using line_parser = bool (*)(std::string_view line, input_record& record, std::string& fault);

std::unique_ptr<record_input> make_line_records(input_form form, std::string_view line_start,
                                                line_parser parse,
                                                std::unique_ptr<chunk_buffer> input,
                                                std::string file);

}  // namespace inspect
