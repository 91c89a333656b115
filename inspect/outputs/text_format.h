#pragma once

// printf-style text appended to a string, for the views' aligned columns and
// SVG coordinates.

#include <string>
#include <string_view>

namespace inspect {

void append_format(std::string& out, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

// UTF-8 text padded to `width` characters (not bytes), for aligned columns.
std::string padded(std::string_view text, std::size_t width);

}  // namespace inspect
