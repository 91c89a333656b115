#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>

// Mode bit 0 set: decoded lines; clear: raw hex lines.
void read_profile_events(unsigned mode);
void drain_profiler_log(unsigned mode, std::uint32_t selector);
void drain_zol_profile(unsigned mode);

void print_profile_record(const std::uint8_t* record);
CFStringRef profile_record_to_string(const std::uint8_t* record);
