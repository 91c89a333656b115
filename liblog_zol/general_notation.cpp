#include "liblog_zol/general_notation.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "liblog_zol/line_builder.h"

namespace zol {
namespace {

__extension__ typedef unsigned __int128 uint128;

// m * 5^q stays below 2^128 for a 53-bit m while q is at most 32.
constexpr int max_fraction_bits = 32;
constexpr int max_whole_shift = 10;

// |value| as its decimal digits (no leading zeros) and the power of ten of
// the first one.
struct decimal {
  char digits[40];
  int count = 0;
  int exponent10 = 0;
};

uint128 power_of_5(int exponent) {
  uint128 power = 1;
  for (int i = 0; i < exponent; ++i) power *= 5;
  return power;
}

// Divides in 64 bits once the value fits, as 128-bit division is a call.
int digits_of(uint128 n, char* digits) {
  char reversed[40];
  int count = 0;
  while (n >> 64) {
    reversed[count++] = static_cast<char>('0' + static_cast<int>(n % 10));
    n /= 10;
  }
  auto low = static_cast<std::uint64_t>(n);
  do {
    reversed[count++] = static_cast<char>('0' + low % 10);
    low /= 10;
  } while (low != 0);
  for (int i = 0; i < count; ++i) digits[i] = reversed[count - 1 - i];
  return count;
}

// The exact decimal of a finite non-zero double whose binary point lies
// within reach; false for the others.
bool exact_decimal(double value, decimal& out) {
  // |value| = whole * 2^shift, read from the bits: no library call.
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const auto biased = static_cast<int>((bits >> 52) & 0x7ff);
  std::uint64_t whole = bits & ((std::uint64_t{1} << 52) - 1);
  if (biased == 0x7ff || (biased == 0 && whole == 0)) return false;
  int shift = -1074;
  if (biased != 0) {
    whole |= std::uint64_t{1} << 52;
    shift = biased - 1075;
  }
  if (shift < 0) {
    // Trailing zero bits move into the exponent.
    const int zeros = std::min(std::countr_zero(whole), -shift);
    whole >>= zeros;
    shift += zeros;
  }
  if (shift < -max_fraction_bits || shift > max_whole_shift) return false;
  // Fixed-point samples keep to 64 bits: the whole part's digits, then the
  // fraction's (frac / 2^q = frac * 5^q / 10^q, below 10^19 while q <= 19).
  if (shift < 0 && shift >= -19) {
    static constexpr std::uint64_t powers_of_5[20] = {
        1ull, 5ull, 25ull, 125ull, 625ull, 3125ull, 15625ull, 78125ull, 390625ull,
        1953125ull, 9765625ull, 48828125ull, 244140625ull, 1220703125ull, 6103515625ull,
        30517578125ull, 152587890625ull, 762939453125ull, 3814697265625ull,
        19073486328125ull};
    static constexpr char zeros[20] = {'0', '0', '0', '0', '0', '0', '0', '0', '0', '0',
                                       '0', '0', '0', '0', '0', '0', '0', '0', '0', '0'};
    const int q = -shift;
    const std::uint64_t int_part = whole >> q;
    // Not zero: the lowest bit of `whole` is set and lies in the fraction.
    const std::uint64_t fraction = (whole & ((std::uint64_t{1} << q) - 1)) * powers_of_5[q];
    const auto fraction_size = static_cast<int>(decimal_size(fraction));
    if (int_part != 0) {
      const auto count = static_cast<int>(decimal_size(int_part));
      decimal_ending_at(out.digits + count, int_part);
      // q digits of fraction, with its leading zeros.
      std::memcpy(out.digits + count, zeros, sizeof zeros);
      decimal_ending_at(out.digits + count + q, fraction);
      out.count = count + q;
      out.exponent10 = count - 1;
      return true;
    }
    // A fraction alone: its leading zeros are not digits.
    decimal_ending_at(out.digits + fraction_size, fraction);
    out.count = fraction_size;
    out.exponent10 = fraction_size - q - 1;
    return true;
  }
  // whole * 2^-q = whole * 5^q / 10^q.
  uint128 n = whole;
  int q = 0;
  if (shift >= 0) {
    n <<= shift;
  } else {
    q = -shift;
    n *= power_of_5(q);
  }
  out.count = digits_of(n, out.digits);
  out.exponent10 = out.count - 1 - q;
  return true;
}

// Ties to even on the exact digits, as the C library rounds.
void round_to(decimal& number, int significant) {
  if (number.count <= significant) return;
  const char next = number.digits[significant];
  bool rest_nonzero = false;
  for (int i = significant + 1; i < number.count; ++i) rest_nonzero |= number.digits[i] != '0';
  const bool last_odd = (number.digits[significant - 1] - '0') % 2 == 1;
  const bool up = next > '5' || (next == '5' && (rest_nonzero || last_odd));
  number.count = significant;
  if (!up) return;
  int i = significant - 1;
  while (i >= 0 && number.digits[i] == '9') number.digits[i--] = '0';
  if (i >= 0) {
    ++number.digits[i];
  } else {
    number.digits[0] = '1';
    ++number.exponent10;
  }
}

char* write_digits(char* p, const char* digits, int count) {
  std::memcpy(p, digits, static_cast<std::size_t>(count));
  return p + count;
}

// Fixed notation of the digits, with no trailing zeros after the point.
char* write_fixed(char* p, const decimal& number) {
  if (number.exponent10 < 0) {
    *p++ = '0';
    *p++ = '.';
    for (int i = -1; i > number.exponent10; --i) *p++ = '0';
    return write_digits(p, number.digits, number.count);
  }
  const int whole_digits = number.exponent10 + 1;
  for (int i = 0; i < whole_digits; ++i) *p++ = i < number.count ? number.digits[i] : '0';
  if (number.count <= whole_digits) return p;
  *p++ = '.';
  return write_digits(p, number.digits + whole_digits, number.count - whole_digits);
}

char* write_exponential(char* p, const decimal& number) {
  *p++ = number.digits[0];
  if (number.count > 1) {
    *p++ = '.';
    p = write_digits(p, number.digits + 1, number.count - 1);
  }
  *p++ = 'e';
  *p++ = number.exponent10 < 0 ? '-' : '+';
  const int magnitude = number.exponent10 < 0 ? -number.exponent10 : number.exponent10;
  if (magnitude >= 100) *p++ = static_cast<char>('0' + magnitude / 100);
  *p++ = static_cast<char>('0' + magnitude / 10 % 10);
  *p++ = static_cast<char>('0' + magnitude % 10);
  return p;
}

std::size_t written_size(int written) { return written > 0 ? static_cast<std::size_t>(written) : 0; }

}  // namespace

std::size_t write_general(double value, char* out) {
  constexpr int significant = 6;
  decimal number;
  if (!exact_decimal(value, number)) return written_size(std::snprintf(out, general_room, "%g", value));
  round_to(number, significant);
  while (number.count > 1 && number.digits[number.count - 1] == '0') --number.count;
  char* p = out;
  if (value < 0) *p++ = '-';
  if (number.exponent10 >= -4 && number.exponent10 < significant)
    p = write_fixed(p, number);
  else
    p = write_exponential(p, number);
  return static_cast<std::size_t>(p - out);
}

std::size_t write_round_trip(double value, char* out) {
  constexpr int round_trip_digits = 17;
  decimal number;
  if (value == 0) {
    out[0] = '0';
    return 1;
  }
  if (!exact_decimal(value, number) || number.count > round_trip_digits ||
      number.exponent10 > 20 || number.exponent10 < -20)
    return written_size(std::snprintf(out, 48, "%.17g", value));
  while (number.count > 1 && number.digits[number.count - 1] == '0') --number.count;
  char* p = out;
  if (value < 0) *p++ = '-';
  p = write_fixed(p, number);
  return static_cast<std::size_t>(p - out);
}

}  // namespace zol
