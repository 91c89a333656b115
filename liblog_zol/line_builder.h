#pragma once

// The text stream a profile line is built in, with the few stream behaviours
// the line needs. A width applies to the next value only, right-aligns it
// with spaces and never cuts a longer one; integers are written in decimal,
// or in lowercase hexadecimal while hex() is on; doubles are written in the
// general notation with six significant digits.
//
// Lines are built on the stack and copied out once; the many short pieces of
// a line are copied inline rather than through library calls.

#include <bit>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "liblog_zol/digit_tables.h"

namespace zol {

// Longer copies, out of line.
void copy_long(char* out, const char* in, std::size_t count) noexcept;

// Copies `count` bytes, reading and writing only inside both ranges.
inline void copy_short(char* out, const char* in, std::size_t count) noexcept {
  if (count >= 8 && count <= 16) {
    std::memcpy(out, in, 8);
    std::memcpy(out + count - 8, in + count - 8, 8);
  } else if (count >= 4 && count < 8) {
    std::memcpy(out, in, 4);
    std::memcpy(out + count - 4, in + count - 4, 4);
  } else if (count < 4) {
    for (std::size_t i = 0; i < count; ++i) out[i] = in[i];
  } else {
    copy_long(out, in, count);
  }
}

// Two digits of `value` (below 100) at `out`.
inline void write_pair(char* out, std::uint32_t value) noexcept {
  std::memcpy(out, decimal_pairs + 2 * value, 2);
}

// Writes `value` in decimal so that it ends at `end`; returns its start.
// Eight digits at a time and the rest in 32-bit arithmetic: cheaper than
// 64-bit division by 100 for every pair.
inline char* decimal_ending_at(char* end, std::uint64_t value) noexcept {
  while (value >= 100000000) {
    const auto low = static_cast<std::uint32_t>(value % 100000000);
    value /= 100000000;
    const std::uint32_t high = low / 10000;
    const std::uint32_t rest = low % 10000;
    end -= 8;
    write_pair(end, high / 100);
    write_pair(end + 2, high % 100);
    write_pair(end + 4, rest / 100);
    write_pair(end + 6, rest % 100);
  }
  auto small = static_cast<std::uint32_t>(value);
  while (small >= 100) {
    end -= 2;
    write_pair(end, small % 100);
    small /= 100;
  }
  if (small >= 10) {
    end -= 2;
    write_pair(end, small);
  } else {
    *--end = static_cast<char>('0' + small);
  }
  return end;
}

// The count of decimal digits of `value`.
inline std::size_t decimal_size(std::uint64_t value) noexcept {
  // 1233 / 4096 is just above log10(2): the guess is the size or one less.
  const auto guess = static_cast<std::size_t>(std::bit_width(value | 1) * 1233 >> 12);
  return guess + (value >= decimal_least[guess] ? 1 : 0);
}

class line_builder {
 public:
  line_builder() noexcept = default;
  line_builder(const line_builder&) = delete;
  line_builder& operator=(const line_builder&) = delete;

  line_builder& width(std::size_t next_width) noexcept {
    width_ = next_width;
    return *this;
  }
  line_builder& hex() noexcept {
    base_ = 16;
    return *this;
  }
  line_builder& dec() noexcept {
    base_ = 10;
    return *this;
  }

  line_builder& operator<<(std::string_view text) {
    begin_value(text.size());
    append(text);
    return *this;
  }

  template <std::unsigned_integral T>
    requires(!std::same_as<T, bool> && !std::same_as<T, char>)
  line_builder& operator<<(T value) {
    write_unsigned(value);
    return *this;
  }

  line_builder& operator<<(double value);

  bool has_width() const noexcept { return width_ != 0; }

  // Pads for a value of `size` characters that the caller then appends
  // whole, and lets the width lapse.
  void begin_value(std::size_t size) {
    if (width_ > size) [[unlikely]] {
      const std::size_t count = width_ - size;
      // Widths are short: one fixed-size copy covers them, whatever lies
      // past `count` being overwritten by what follows.
      if (count <= sizeof spaces_) {
        std::memcpy(reserve(sizeof spaces_), spaces_, sizeof spaces_);
        size_ += count;
      } else {
        pad(count);
      }
    }
    width_ = 0;
  }

  // Room for `count` more characters: where to write them. commit() then
  // takes the end of what was written.
  char* reserve(std::size_t count) {
    if (capacity_ - size_ < count) grow(count);
    return data_ + size_;
  }
  void commit(const char* end) noexcept { size_ = static_cast<std::size_t>(end - data_); }
  // The end of the room: a writer holding its own pointer checks against it.
  const char* limit() const noexcept { return data_ + capacity_; }

  // One character after a value, where no width is pending.
  void put(char c) {
    *reserve(1) = c;
    ++size_;
  }

  void append(std::string_view text) {
    char* out = reserve(text.size());
    copy_short(out, text.data(), text.size());
    size_ += text.size();
  }

  std::string take() const { return std::string(data_, size_); }
  std::string_view view() const noexcept { return {data_, size_}; }
  // The text with a zero after it, which the size does not count.
  const char* c_str() {
    *reserve(1) = '\0';
    return data_;
  }
  void clear() noexcept { size_ = 0; width_ = 0; base_ = 10; }

  void signed_value(std::int64_t value) {
    if (value >= 0) {
      write_unsigned(static_cast<std::uint64_t>(value));
      return;
    }
    // The sign counts in the width.
    char digits[21];
    char* const end = digits + sizeof digits;
    char* const start = decimal_ending_at(end, 0 - static_cast<std::uint64_t>(value)) - 1;
    *start = '-';
    const std::string_view text(start, static_cast<std::size_t>(end - start));
    begin_value(text.size());
    append(text);
  }

 private:
  void write_unsigned(std::uint64_t value) {
    char digits[20];
    char* const end = digits + sizeof digits;
    std::string_view text;
    if (base_ == 10) {
      const char* const start = decimal_ending_at(end, value);
      text = {start, static_cast<std::size_t>(end - start)};
    } else {
      // Lowercase hex digits, no prefix.
      char* start = end;
      do {
        *--start = hex_digits[value & 0xf];
        value >>= 4;
      } while (value != 0);
      text = {start, static_cast<std::size_t>(end - start)};
    }
    begin_value(text.size());
    append(text);
  }
  void pad(std::size_t count);
  void grow(std::size_t count);

  static constexpr char spaces_[16] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ',
                                       ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
  // Room for every line the decoders write; longer ones move to the heap.
  char stack_[2048];
  std::string heap_;
  char* data_ = stack_;
  std::size_t size_ = 0;
  std::size_t capacity_ = sizeof stack_;
  std::size_t width_ = 0;
  int base_ = 10;
};

}  // namespace zol
