#pragma once

#include <cstddef>
#include <string_view>

namespace tmxsim {

// Well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool is_valid_utf8(std::string_view text);

bool is_ascii(std::string_view text);

// The length in UTF-16 code units of well-formed UTF-8 text.
std::size_t utf16_length(std::string_view text);

}  // namespace tmxsim
