#pragma once

// A failure line of the collector, taken apart and named: which check at
// which source line, and what it means for the request it belongs to.

#include <optional>
#include <string>
#include <string_view>

#include "inspect/capture/capture_model.h"

namespace inspect {

inline constexpr std::string_view failure_start = "Assertion failed: ";

struct failure_parse {
  failure_line failure;
  bool hex_line_number = false;  // the line number was written in hexadecimal
  bool has_value = false;
};

// `hex_numbers`: an earlier line carried a value, so the stream writes
// numbers in hexadecimal. False with `fault` for a line the collector
// cannot have written.
bool parse_failure_line(std::string_view line, bool hex_numbers, failure_parse& parsed,
                        std::string& fault);

}  // namespace inspect
