#pragma once

#include <cstdint>

// Sixteen bytes a line on standard output, each line behind `label` when one
// is given.
void hexdump(const void* buffer, std::uint64_t length, const char* label);
