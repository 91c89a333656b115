#pragma once

// Numbers as every output writes them: one helper each.

#include <cstdint>
#include <span>
#include <string>

namespace inspect {

// "0xe00002f0": the collector's hexadecimal, lower case.
std::string hex_text(std::uint64_t value);
// "e004…": bytes as pairs of lower-case hex digits.
std::string hex_bytes(std::span<const std::uint8_t> bytes);
// "1.250" for 1250 µs, "-0.008" for -8.
std::string milliseconds_text(std::int64_t microseconds);
// The same of a duration, which may pass 2^63 µs where a clock is wild.
std::string duration_ms_text(std::uint64_t microseconds);
// "+8 µs", "0 µs", "-120 µs".
std::string signed_micro_text(std::int64_t value);

}  // namespace inspect
