#pragma once

#include <string>
#include <string_view>

namespace tmxsim {

// `text` fit for one line between double quotes: quotes, backslashes and
// control characters are escaped (\", \\, \xNN).
std::string printable(std::string_view text);

// The same between double quotes.
std::string quoted(std::string_view text);

}  // namespace tmxsim
