#pragma once

#include <cstdint>
#include <iostream>
#include <string_view>

#include "quandor/failure.h"

// A section banner, flushed at once so it keeps its place among the failure
// lines on standard error.
inline void write_banner(std::string_view text) {
  std::cout << text << std::endl;
}

// Every failure line of the tool names the same module and source, and no
// message.
inline void kelvra_bail(const char* check, std::int64_t line,
                        std::int32_t error) {
  report_failure("kelvra", check, "bail", nullptr, "kelvra/kelvra", line,
                 error);
}
