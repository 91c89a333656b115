#pragma once

// The digit tables every text of a record is written with.

#include <array>
#include <cstddef>
#include <cstdint>

namespace zol {

inline constexpr char decimal_pairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// The least value of each count of decimal digits, from one; zero has one.
inline constexpr std::uint64_t decimal_least[20] = {
    0ull, 10ull, 100ull, 1000ull, 10000ull, 100000ull, 1000000ull, 10000000ull,
    100000000ull, 1000000000ull, 10000000000ull, 100000000000ull, 1000000000000ull,
    10000000000000ull, 100000000000000ull, 1000000000000000ull, 10000000000000000ull,
    100000000000000000ull, 1000000000000000000ull, 10000000000000000000ull};

inline constexpr char hex_digits[] = "0123456789abcdef";

// Two lowercase hex digits for each byte.
inline constexpr std::array<char, 512> hex_pairs = [] {
  std::array<char, 512> pairs{};
  for (std::size_t byte = 0; byte < 256; ++byte) {
    pairs[2 * byte] = hex_digits[byte >> 4];
    pairs[2 * byte + 1] = hex_digits[byte & 0xf];
  }
  return pairs;
}();

}  // namespace zol
