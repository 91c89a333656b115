#include "inspect/outputs/page_parts.h"

namespace inspect {

void append_html(std::string& out, std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
}

std::uint64_t axis_step(std::uint64_t span) {
  std::uint64_t step = 1;
  for (;;) {
    for (const std::uint64_t factor : {1, 2, 5})
      if (span / (step * factor) <= 10) return step * factor;
    step *= 10;
  }
}

}  // namespace inspect
