#pragma once

// Standard output in large blocks: a line per record would otherwise cost a
// library call each.

#include <cstdio>
#include <string>
#include <string_view>

namespace inspect {

class output_buffer {
 public:
  explicit output_buffer(std::FILE* file) : file_(file) { buffer_.reserve(capacity); }
  output_buffer(const output_buffer&) = delete;
  output_buffer& operator=(const output_buffer&) = delete;
  ~output_buffer() { flush(); }

  void line(std::string_view text) {
    buffer_ += text;
    buffer_ += '\n';
    if (buffer_.size() >= capacity) flush();
  }
  // False when the output could not be written (a full disk, a closed pipe).
  bool flush();
  // The exit status: `status`, or 2 after a line on standard error when the
  // output could not be written.
  int finish(int status);

 private:
  static constexpr std::size_t capacity = 1 << 20;
  std::FILE* file_;
  std::string buffer_;
  bool failed_ = false;
};

// The whole text to `path`, "-" for standard output; the exit status, 2
// after a line on standard error when it cannot be written.
int write_output(const std::string& path, std::string_view text);

}  // namespace inspect
