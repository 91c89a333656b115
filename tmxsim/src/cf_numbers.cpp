#include "cf_numbers.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tmxsim {
namespace {

struct number_layout {
  std::string_view name;
  std::size_t size;
  bool is_float;
};

// By CFNumberType, from kCFNumberSInt8Type (1) to kCFNumberCGFloatType (16).
constexpr number_layout number_layouts[] = {
    {"SInt8", 1, false},
    {"SInt16", 2, false},
    {"SInt32", 4, false},
    {"SInt64", 8, false},
    {"Float32", 4, true},
    {"Float64", 8, true},
    {"Char", sizeof(char), false},
    {"Short", sizeof(short), false},
    {"Int", sizeof(int), false},
    {"Long", sizeof(long), false},
    {"LongLong", sizeof(long long), false},
    {"Float", sizeof(float), true},
    {"Double", sizeof(double), true},
    {"CFIndex", sizeof(CFIndex), false},
    {"NSInteger", sizeof(long), false},
    {"CGFloat", sizeof(double), true},
};

// 2^63: the first double past the signed 64-bit range.
constexpr double two_to_63 = 9223372036854775808.0;

const number_layout* layout_of(CFNumberType type) {
  if (type < kCFNumberSInt8Type || type > kCFNumberMaxType) return nullptr;
  return &number_layouts[type - 1];
}

CFNumberType canonical_type(const number_layout& layout) {
  if (layout.is_float) return layout.size == 4 ? kCFNumberFloat32Type : kCFNumberFloat64Type;
  switch (layout.size) {
    case 1:
      return kCFNumberSInt8Type;
    case 2:
      return kCFNumberSInt16Type;
    case 4:
      return kCFNumberSInt32Type;
    default:
      return kCFNumberSInt64Type;
  }
}

template <typename type>
type read_as(const void* source) {
  type value;
  std::memcpy(&value, source, sizeof value);
  return value;
}

template <typename type>
void write_as(void* target, type value) {
  std::memcpy(target, &value, sizeof value);
}

// The integer a double stands for, when it is one and fits 64 bits.
bool exact_integer(double real, std::int64_t& integer) {
  if (!std::isfinite(real) || real != std::trunc(real) || real < -two_to_63 ||
      real >= two_to_63)
    return false;
  integer = static_cast<std::int64_t>(real);
  return true;
}

bool load_integer(const cf_value& number, std::size_t size, void* target) {
  const int bits = static_cast<int>(size * 8);
  const std::int64_t low = bits == 64 ? INT64_MIN : -(std::int64_t{1} << (bits - 1));
  const std::int64_t high = bits == 64 ? INT64_MAX : (std::int64_t{1} << (bits - 1)) - 1;
  std::int64_t value = number.integer;
  bool exact = value >= low && value <= high;
  if (number.is_float) {
    const double truncated = std::trunc(number.real);
    exact = false;
    if (std::isnan(number.real)) {
      value = 0;
    } else if (truncated < static_cast<double>(low)) {
      value = low;
    } else if (truncated >= -static_cast<double>(low)) {
      value = high;
    } else {
      value = static_cast<std::int64_t>(truncated);
      exact = truncated == number.real;
    }
  }
  switch (size) {
    case 1:
      write_as(target, static_cast<std::int8_t>(value));
      break;
    case 2:
      write_as(target, static_cast<std::int16_t>(value));
      break;
    case 4:
      write_as(target, static_cast<std::int32_t>(value));
      break;
    default:
      write_as(target, value);
  }
  return exact;
}

bool load_float(const cf_value& number, std::size_t size, void* target) {
  const double real =
      number.is_float ? number.real : static_cast<double>(number.integer);
  std::int64_t back = 0;
  if (size == 8) {
    write_as(target, real);
    return number.is_float || (exact_integer(real, back) && back == number.integer);
  }
  float narrow = 0;
  if (std::isfinite(real) && std::fabs(real) > FLT_MAX)
    narrow = real > 0 ? INFINITY : -INFINITY;
  else
    narrow = static_cast<float>(real);
  write_as(target, narrow);
  const double widened = static_cast<double>(narrow);
  if (number.is_float) return widened == real || std::isnan(real);
  return exact_integer(widened, back) && back == number.integer;
}

}  // namespace

bool known_number_type(CFNumberType type) { return layout_of(type) != nullptr; }

std::string number_type_name(CFNumberType type) {
  const number_layout* layout = layout_of(type);
  return layout != nullptr ? std::string(layout->name) : std::to_string(type);
}

bool store_number(cf_value& number, CFNumberType type, const void* source) {
  const number_layout* layout = layout_of(type);
  if (layout == nullptr) return false;
  number.number_type = canonical_type(*layout);
  number.is_float = layout->is_float;
  if (layout->is_float) {
    number.real = layout->size == 4 ? static_cast<double>(read_as<float>(source))
                                    : read_as<double>(source);
    return true;
  }
  switch (layout->size) {
    case 1:
      number.integer = read_as<std::int8_t>(source);
      break;
    case 2:
      number.integer = read_as<std::int16_t>(source);
      break;
    case 4:
      number.integer = read_as<std::int32_t>(source);
      break;
    default:
      number.integer = read_as<std::int64_t>(source);
  }
  return true;
}

bool load_converted(const cf_value& number, CFNumberType type, void* target) {
  const number_layout* layout = layout_of(type);
  if (layout == nullptr) return false;
  return layout->is_float ? load_float(number, layout->size, target)
                          : load_integer(number, layout->size, target);
}

bool numbers_equal(const cf_value& a, const cf_value& b) {
  if (a.is_float && b.is_float) return a.real == b.real;
  return number_is(a.is_float ? a : b, a.is_float ? b.integer : a.integer);
}

bool number_is(const cf_value& number, std::int64_t value) {
  if (!number.is_float) return number.integer == value;
  std::int64_t integer = 0;
  return exact_integer(number.real, integer) && integer == value;
}

}  // namespace tmxsim
