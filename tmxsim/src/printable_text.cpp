#include "printable_text.h"

namespace tmxsim {

std::string printable(std::string_view text) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (byte < 0x20 || byte == 0x7f) {
      out += "\\x";
      out += digits[byte >> 4];
      out += digits[byte & 0xf];
    } else {
      out += c;
    }
  }
  return out;
}

std::string quoted(std::string_view text) {
  std::string out(1, '"');
  out += printable(text);
  out += '"';
  return out;
}

}  // namespace tmxsim
