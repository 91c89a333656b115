#include "call_log.h"

#include <charconv>

#include "printable_text.h"

namespace tmxsim {

bool call_log::open(const char* path) {
  file_ = std::fopen(path, "a");
  return file_ != nullptr;
}

void call_log::write(std::string& line) {
  if (file_ == nullptr) return;
  if (misuse_ != nullptr) {
    line += " misuse: ";
    line += misuse_;
    misuse_ = nullptr;
  }
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), file_);
}

void call_log::finish(const std::string& last_line) {
  if (file_ == nullptr) return;
  std::fprintf(file_, "%s\n", last_line.c_str());
  std::fclose(file_);
  file_ = nullptr;
}

log_line& log_line::word(std::string_view text) {
  text_ += ' ';
  text_ += text;
  return *this;
}

log_line& log_line::quoted(const char* text) {
  if (text == nullptr) return word("NULL");
  return word(tmxsim::quoted(text));
}

log_line& log_line::hex(std::uint64_t value) {
  char digits[24] = "0x";
  const auto [end, error] = std::to_chars(digits + 2, digits + sizeof digits, value, 16);
  return word(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

log_line& log_line::number(std::int64_t value) {
  char digits[24];
  const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
  return word(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

}  // namespace tmxsim
