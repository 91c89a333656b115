#pragma once

// Raw records, 48 bytes each, end to end. A tail too short for a record is
// warned about on `messages`.

#include <cstdio>
#include <memory>
#include <string>

#include "inspect/input/chunk_buffer.h"
#include "inspect/input/record_input.h"

namespace inspect {

std::unique_ptr<record_input> make_raw_reader(std::unique_ptr<chunk_buffer> input,
                                              std::string file, std::FILE* messages);

}  // namespace inspect
