#pragma once

#include <cstdint>
#include <iostream>
#include <string_view>

#include "quandor/failure.h"
#include "quandor/layouts/harvest_requests.h"

// A section banner, flushed at once so it keeps its place among the failure
// lines on standard error.
inline void write_banner(std::string_view text) {
  std::cout << text << std::endl;
}

// Every failure line of the tool names the same module and source, and no
// message.
inline void kelvra_bail(const layouts::failure_site& site,
                        std::int32_t error) {
  report_failure("kelvra", site.check, "bail", nullptr, "kelvra/kelvra",
                 site.line, error);
}
