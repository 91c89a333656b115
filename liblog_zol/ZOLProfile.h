#pragma once

// The profile-log library: the profiler's 48-byte event record, its decoders
// and their printers. The library itself needs no platform; the entries
// marked "device" read the timesync service or abort through the platform,
// and come with ZOLProfile_device.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

inline constexpr std::size_t profile_record_size = 48;

namespace zol {
class clock_source;
class record_printer;
}  // namespace zol

// The whole line for one record (no newline), through the decoder of its
// category, with the calendar time from `clock`.
std::string format_profile_record(const std::uint8_t* record, zol::clock_source& clock);

// The record, item by item, to any printer.
void decode_profile_record(zol::record_printer& printer, const std::uint8_t* record,
                           zol::clock_source& clock);

// The record's 48 bytes as 96 lowercase hex digits, written at `out`.
void write_profile_hex(char* out, const std::uint8_t* record);

// Device: the line with the clock pair read from the timesync service for
// this record.
std::string format_profile_record(const std::uint8_t* record);

// Device: the same line, zero-terminated, in a buffer of the calling thread
// that the next call reuses: no allocation a record.
const char* profile_line(const std::uint8_t* record);

// Device: the calendar-time text of a record timestamp; false, and `text`
// untouched, when the platform publishes no clock correlation.
bool profile_calendar_time(std::uint64_t timestamp, std::string& text);

// Device: one line, the label then the record's hex digits. Aborts
// (assertion) when the label is too long for the line.
void tmx_profile_hexdump(const char* label, const std::uint8_t* record);
