#pragma once

// Which form an input holds, from its first bytes.

#include <cstddef>
#include <string_view>

#include "inspect/input/record_input.h"

namespace inspect {

// How much of the input's start detect_form() wants to see.
inline constexpr std::size_t detection_size = 64 * 1024;

// Control bytes other than text's own make it raw; else whichever of a
// "prof-event " line and a profile line comes first; harvest when neither.
input_form detect_form(std::string_view start);

// The starts of the lines that carry records.
inline constexpr std::string_view profile_line_start = "{  'category':";
inline constexpr std::string_view hex_line_start = "prof-event ";

}  // namespace inspect
