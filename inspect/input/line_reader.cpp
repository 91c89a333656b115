#include "inspect/input/line_reader.h"

#include <algorithm>
#include <cstring>

namespace inspect {

namespace {

// Enough of a long line's start to tell which kind of line it is.
constexpr std::size_t long_line_start = 64;

text_line cut_line(std::string_view text, std::uint64_t number, bool ended) {
  text_line line{text, number, false, ended, false};
  // Cut short inside its line end, a line still ends at its "\r".
  if (line.text.ends_with('\r')) {
    line.text.remove_suffix(1);
    line.crlf = true;
  }
  return line;
}

}  // namespace

bool line_reader::skip_rest_of_line() {
  for (;;) {
    const std::string_view data = input_.data();
    if (const void* end = std::memchr(data.data(), '\n', data.size())) {
      input_.take(static_cast<std::size_t>(static_cast<const char*>(end) - data.data()) + 1);
      return true;
    }
    input_.take(data.size());
    if (!input_.refill()) return false;
  }
}

bool line_reader::next(text_line& line) {
  if (skipping_) {
    skipping_ = false;
    if (!skip_rest_of_line()) return false;
  }
  for (;;) {
    const std::string_view data = input_.data();
    const void* end = scanned_ < data.size()
                          ? std::memchr(data.data() + scanned_, '\n', data.size() - scanned_)
                          : nullptr;
    if (end != nullptr) {
      const auto length = static_cast<std::size_t>(static_cast<const char*>(end) - data.data());
      if (length > longest_line) break;
      line = cut_line(data.substr(0, length), ++number_, true);
      input_.take(length + 1);
      scanned_ = 0;
      return true;
    }
    scanned_ = data.size();
    if (data.size() > longest_line) break;
    if (!input_.refill()) {
      // The input ends inside a line: handed out as it stands. Refilling
      // moved it.
      const std::string_view last = input_.data();
      if (last.empty()) return false;
      line = cut_line(last, ++number_, false);
      input_.take(last.size());
      scanned_ = 0;
      return true;
    }
  }
  const std::string_view data = input_.data();
  line = {data.substr(0, long_line_start), ++number_, false, true, true};
  // The start stays in the buffer until the next call.
  skipping_ = true;
  scanned_ = 0;
  return true;
}

}  // namespace inspect
