#pragma once

// A failure line of the collector taken apart: its module, check, source
// line and result, checked against the sites of the request table and by
// writing it again from its parts.

#include <optional>
#include <string>
#include <string_view>

#include "inspect/capture/capture_model.h"
#include "inspect/capture/number_text.h"

namespace inspect {

struct failure_parse {
  failure_line failure;
  const layouts::failure_site* site = nullptr;
  // The request the site belongs to; none for the one-shot command call's
  // lines, which any one-shot request writes.
  std::optional<request> about;
  bool hex_line_number = false;  // its source line was written in hexadecimal
  bool has_value = false;
};

// False with `fault` for a line the collector cannot have written. The
// line's own base is taken: whether it fits the lines before is the
// caller's to judge.
bool parse_failure_line(std::string_view line, failure_parse& parsed, std::string& fault);

}  // namespace inspect
