#pragma once

// The forms an input may hold, as a table: each with its name, the probe
// that knows it by its first bytes, the start of the lines that carry its
// records and their reader. Detection asks the probes in table order,
// strongest sign first; an input none of them knows is no capture.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "inspect/input/record_lines.h"

namespace inspect {

enum class input_form { harvest, hex, raw };

struct form_row {
  input_form form;
  std::string_view name;
  bool (*probe)(std::string_view start);
  std::string_view line_start;  // empty: not a line form
  bool (*parse)(std::string_view line, input_record& record, std::string& fault);
};

// How much of an input's start the probes look at.
inline constexpr std::size_t detection_size = 64 * 1024;

const form_row& form_of(input_form form);
std::optional<input_form> form_of_name(std::string_view name);

// The form of an input from its first bytes; none when no probe knows it.
std::optional<input_form> detect_form(std::string_view start);

// What the probes look for, for the message that none found it.
inline constexpr std::string_view forms_looked_for =
    "no harvest banner, profile line or failure line, no \"prof-event \" line, and text "
    "rather than raw records";

}  // namespace inspect
