#pragma once

// The lines of the collector's hex dump (no label), back into bytes.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace inspect {

// One line of the dump at `offset`, as the collector writes it.
std::string hexdump_line(std::uint64_t offset, std::span<const std::uint8_t> bytes);

// Appends the bytes of a line that must start at `offset`; false with
// `fault` for anything the dump does not write.
bool read_hexdump_line(std::string_view line, std::uint64_t offset, std::vector<std::uint8_t>& bytes,
                       std::string& fault);

// Whether a line looks like a dump line at all: "xxxxxxxx: ".
bool looks_like_hexdump(std::string_view line);

}  // namespace inspect
