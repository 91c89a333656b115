#include "inspect/output_buffer.h"

namespace inspect {

bool output_buffer::flush() {
  if (!buffer_.empty() && !failed_) {
    failed_ = std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size();
    buffer_.clear();
  }
  if (!failed_) failed_ = std::fflush(file_) != 0;
  return !failed_;
}

int output_buffer::finish(int status) {
  if (flush()) return status;
  std::fprintf(stderr, "kelvra-inspect: standard output: write error\n");
  return 2;
}

}  // namespace inspect
