#pragma once

#include <string_view>

namespace inspect {

// Well-formed UTF-8: no stray continuation bytes, overlong forms, surrogates
// or code points past U+10FFFF.
bool valid_utf8(std::string_view text) noexcept;

}  // namespace inspect
