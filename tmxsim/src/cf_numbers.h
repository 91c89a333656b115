#pragma once

// CFNumber storage and conversion between the number types.

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "cf_store.h"

namespace tmxsim {

bool known_number_type(CFNumberType type);

// "SInt32", "LongLong", ...; the number itself for an unknown type.
std::string number_type_name(CFNumberType type);

// Stores the value at `source`, read as `type`. False for an unknown type.
bool store_number(cf_value& number, CFNumberType type, const void* source);

bool load_converted(const cf_value& number, CFNumberType type, void* target);

// Writes the value as `type` to `target`. False when the conversion is lossy
// (the nearest value is written) or the type unknown (nothing is written).
// An integer read as 64 bits, as the tool reads its clock, needs no
// conversion.
inline bool load_number(const cf_value& number, CFNumberType type, void* target) {
  static_assert(sizeof(long long) == sizeof number.integer);
  if (!number.is_float && (type == kCFNumberSInt64Type || type == kCFNumberLongLongType)) {
    std::memcpy(target, &number.integer, sizeof number.integer);
    return true;
  }
  return load_converted(number, type, target);
}

// Equal by value, whatever the types.
bool numbers_equal(const cf_value& a, const cf_value& b);
bool number_is(const cf_value& number, std::int64_t value);

}  // namespace tmxsim
