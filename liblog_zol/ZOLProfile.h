#pragma once

// The profile-log library: the profiler's 48-byte event record and its
// rendering as one line of text.

#include <cstddef>
#include <cstdint>
#include <string>

inline constexpr std::size_t profile_record_size = 48;

// The whole line for one record (no newline), through the decoder of its
// category.
std::string format_profile_record(const std::uint8_t* record);

// The calendar-time text of a record timestamp; false, and `text` untouched,
// when the platform publishes no clock correlation.
bool profile_calendar_time(std::uint64_t timestamp, std::string& text);

// One line: the label, then the record's 48 bytes as 96 lowercase hex digits.
// Aborts (assertion) when the label is too long for the line.
void tmx_profile_hexdump(const char* label, const std::uint8_t* record);
