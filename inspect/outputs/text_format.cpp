#include "inspect/outputs/text_format.h"

#include <cstdarg>
#include <cstdio>

namespace inspect {

void append_format(std::string& out, const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  std::va_list again;
  va_copy(again, args);
  const int size = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  if (size > 0) {
    const std::size_t start = out.size();
    out.resize(start + static_cast<std::size_t>(size) + 1);
    std::vsnprintf(out.data() + start, static_cast<std::size_t>(size) + 1, format, again);
    out.resize(start + static_cast<std::size_t>(size));
  }
  va_end(again);
}

std::string padded(std::string_view text, std::size_t width) {
  std::size_t characters = 0;
  for (const char c : text)
    if ((static_cast<unsigned char>(c) & 0xc0) != 0x80) ++characters;
  std::string result(text);
  if (characters < width) result.append(width - characters, ' ');
  return result;
}

}  // namespace inspect
