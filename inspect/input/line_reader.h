#pragma once

// The lines of an input, numbered from 1: the one splitter every reader
// uses. A line ends at "\n"; a "\r" just before it belongs to the line end
// (a capture saved on another system). A line too long to hold is handed out
// as its first bytes only and then skipped, never kept whole.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "inspect/input/chunk_buffer.h"

namespace inspect {

struct text_line {
  std::string_view text;  // without its line end; valid until the next call
  std::uint64_t number = 0;
  bool crlf = false;      // it ended in "\r\n"
  bool ended = true;      // false: the input ends inside it
  bool too_long = false;  // then `text` is only the line's start
};

class line_reader {
 public:
  static constexpr std::size_t longest_line = 64 * 1024;
  // What the buffer must hold back across a refill for a line reader.
  static constexpr std::size_t kept_bytes = longest_line + 1;

  explicit line_reader(chunk_buffer& input) : input_(input) {}

  // False at the end of the input or on a read fault.
  bool next(text_line& line);

 private:
  bool skip_rest_of_line();

  chunk_buffer& input_;
  std::uint64_t number_ = 0;
  std::size_t scanned_ = 0;  // of data(), known to hold no "\n"
  bool skipping_ = false;
};

}  // namespace inspect
