#pragma once

// Doubles as text without the C library's cost for the values the records
// hold: fixed-point samples, exact binary fractions. Anything else goes
// through the C library.

#include <cstddef>

namespace zol {

// The room write_general() needs.
inline constexpr std::size_t general_room = 32;

// As "%g" writes it: general notation, six significant digits, trailing
// zeros dropped. Writes at `out` (room for general_room characters);
// returns the size.
std::size_t write_general(double value, char* out);

// A JSON number that reads back as the same double: the exact decimal when
// it has at most 17 significant digits, else "%.17g". Finite values only;
// room for 48 characters at `out`.
std::size_t write_round_trip(double value, char* out);

}  // namespace zol
