#pragma once

// The bytes of a reply as a description writes them: hexadecimal text or
// little-endian pieces laid end to end.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tmxsim {

// No reply, and no piece of one, may be larger: a description cannot ask for
// more memory than a phone would ever deliver.
inline constexpr std::size_t max_reply_size = std::size_t{16} << 20;

// Appends the bytes of `hex` (pairs of digits, blanks between pairs) unless
// the reply would outgrow max_reply_size. Returns "" or what is wrong.
std::string append_hex(std::string_view hex, std::vector<std::uint8_t>& reply);

// The integer pieces, in the order the description lists them.
struct integer_piece {
  std::string_view key;
  std::size_t size;
  std::int64_t min;
  std::uint64_t max;
};

inline constexpr integer_piece integer_pieces[] = {
    {"u8", 1, 0, 0xff},
    {"u16", 2, 0, 0xffff},
    {"u32", 4, 0, 0xffffffff},
    {"i32", 4, -2147483648LL, 2147483647},
    {"u64", 8, 0, UINT64_MAX},
};

// `value` as `size` little-endian bytes (two's complement for negatives).
void append_little_endian(std::vector<std::uint8_t>& reply, std::uint64_t value,
                          std::size_t size);

// `text` cut or NUL-padded to `size` bytes.
void append_text(std::vector<std::uint8_t>& reply, std::string_view text,
                 std::size_t size);

}  // namespace tmxsim
