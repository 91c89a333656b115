#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <algorithm>
#include <span>
#include <type_traits>

static_assert(std::endian::native == std::endian::little,
              "device records are little-endian and read in place");

// The one way device fields are read: packed, unaligned, little-endian. A
// field that does not lie wholly inside the view reads as zero, so no record,
// however malformed, can take a read past its buffer.
class byte_reader {
 public:
  constexpr byte_reader(const void* data, std::size_t size) noexcept
      : bytes_(static_cast<const std::uint8_t*>(data), data ? size : 0) {}
  constexpr explicit byte_reader(std::span<const std::uint8_t> bytes) noexcept
      : bytes_(bytes) {}

  template <class T>
  T get(std::size_t offset) const noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    if (offset <= bytes_.size() && sizeof(T) <= bytes_.size() - offset)
      std::memcpy(&value, bytes_.data() + offset, sizeof(T));
    return value;
  }

  std::uint8_t u8(std::size_t offset) const noexcept { return get<std::uint8_t>(offset); }
  std::uint16_t u16(std::size_t offset) const noexcept { return get<std::uint16_t>(offset); }
  std::uint32_t u32(std::size_t offset) const noexcept { return get<std::uint32_t>(offset); }
  std::int32_t i32(std::size_t offset) const noexcept { return get<std::int32_t>(offset); }
  std::uint64_t u64(std::size_t offset) const noexcept { return get<std::uint64_t>(offset); }

  // The bytes [offset, offset + count), cut at the end of the view.
  std::span<const std::uint8_t> bytes(std::size_t offset, std::size_t count) const noexcept {
    if (offset >= bytes_.size()) return {};
    return bytes_.subspan(offset, std::min(count, bytes_.size() - offset));
  }

  std::size_t size() const noexcept { return bytes_.size(); }

 private:
  std::span<const std::uint8_t> bytes_;
};
