#include "quandor/printers.h"

#include "liblog_zol/byte_reader.h"

#include <cstdio>

namespace {

constexpr std::size_t transfer_entry_size = 32;
constexpr std::size_t name_offset = 24;
constexpr std::size_t name_size = 8;

}  // namespace

void print_transfer_errors(const std::string&, std::uint32_t,
                           std::uint8_t* buffer, std::uint64_t length) {
  const auto count = static_cast<std::uint32_t>(length / transfer_entry_size);
  if (buffer == nullptr) return;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint8_t* entry = buffer + std::size_t{i} * transfer_entry_size;
    // Terminate the name in the caller's buffer: a full name field loses its
    // last character.
    entry[transfer_entry_size - 1] = 0;
    const byte_reader fields(entry, transfer_entry_size);
    const auto* name =
        reinterpret_cast<const char*>(fields.bytes(name_offset, name_size).data());
    std::printf("%-15s read_errors: %d/%d write_errors: %d/%d other_errors: %d/%d\n",
                name, fields.i32(4), fields.i32(0), fields.i32(12), fields.i32(8),
                fields.i32(20), fields.i32(16));
  }
}
