#pragma once

// The profiler's 48-byte event record, read in place: a type word (category,
// component, event and type ids, one byte each from high to low), a sequence
// number, a timestamp and 32 payload bytes.

#include <cstdint>

#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/byte_reader.h"

namespace zol {

class profile_record {
 public:
  explicit profile_record(const std::uint8_t* bytes) noexcept
      : bytes_(bytes, profile_record_size) {}

  std::uint32_t type_word() const noexcept { return bytes_.u32(0); }
  std::uint32_t category_id() const noexcept { return type_word() >> 24; }
  std::uint32_t component_id() const noexcept { return (type_word() >> 16) & 0xff; }
  std::uint32_t event_id() const noexcept { return (type_word() >> 8) & 0xff; }
  std::uint32_t type_id() const noexcept { return type_word() & 0xff; }
  std::uint32_t sequence_number() const noexcept { return bytes_.u32(4); }
  std::uint64_t timestamp() const noexcept { return bytes_.u64(8); }

  // All 48 bytes; payload fields are read through it at record offsets.
  const byte_reader& bytes() const noexcept { return bytes_; }

 private:
  byte_reader bytes_;
};

}  // namespace zol
