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

void append_page_head(std::string& out, std::string_view title, std::string_view own_style) {
  out += "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>";
  append_html(out, title);
  out +=
      "</title>\n<style>\n"
      "body{font-family:sans-serif;margin:16px 24px;color:#202020;background:#ffffff}\n"
      "h1{font-size:20px;margin:0 0 4px}h2{font-size:15px;margin:18px 0 6px}\n"
      "p,li,td,th{font-size:13px}.sub{color:#555;margin:0 0 10px}\n"
      ".missing,.bad{color:";
  out += warning_colour;
  out +=
      "}\n"
      "svg text{font-family:sans-serif;font-size:11px;fill:#202020}\n"
      "code{font-size:12px}\n";
  out += own_style;
  out += "</style>\n</head>\n<body>\n<h1>";
  append_html(out, title);
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
