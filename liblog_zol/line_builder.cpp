#include "liblog_zol/line_builder.h"

#include <algorithm>

#include "liblog_zol/general_notation.h"

namespace zol {

void copy_long(char* out, const char* in, std::size_t count) noexcept {
  std::memcpy(out, in, count);
}

line_builder& line_builder::operator<<(double value) {
  // General notation, six significant digits, as the stream writes it.
  char digits[48];  // room for the widest copy of a short text
  const std::size_t size = write_general(value, digits);
  begin_value(size);
  append(std::string_view(digits, size));
  return *this;
}

void line_builder::pad(std::size_t count) {
  std::memset(reserve(count), ' ', count);
  size_ += count;
}

void line_builder::grow(std::size_t count) {
  const std::size_t capacity = std::max(2 * capacity_, size_ + count);
  heap_.resize(capacity);
  if (data_ == stack_) std::memcpy(heap_.data(), stack_, size_);
  data_ = heap_.data();
  capacity_ = capacity;
}

}  // namespace zol
