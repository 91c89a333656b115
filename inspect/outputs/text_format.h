#pragma once

// printf-style text appended to a string, for the views' aligned columns and
// SVG coordinates.

#include <string>

namespace inspect {

void append_format(std::string& out, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

}  // namespace inspect
