#include "inspect/outputs/output_buffer.h"

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

int write_output(const std::string& path, std::string_view text) {
  if (path == "-") {
    output_buffer out(stdout);
    out.line(text.substr(0, text.ends_with('\n') ? text.size() - 1 : text.size()));
    return out.finish(0);
  }
  std::FILE* file = std::fopen(path.c_str(), "wb");
  bool written = file != nullptr && std::fwrite(text.data(), 1, text.size(), file) == text.size();
  if (file != nullptr && std::fclose(file) != 0) written = false;
  if (written) return 0;
  std::fprintf(stderr, "kelvra-inspect: %s: cannot be written\n", path.c_str());
  return 2;
}

}  // namespace inspect
