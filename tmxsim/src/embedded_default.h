#pragma once

#include <string_view>

namespace tmxsim {

inline constexpr std::string_view default_origin = "built-in default phone";

// The default phone, replayed from devices/default.harvest.txt at build time
// and built into the library, with description_padding
// bytes after it.
std::string_view embedded_default_description();

}  // namespace tmxsim
