#pragma once

#include <cstdint>

#include "quandor/failure.h"
#include "quandor/layouts/harvest_requests.h"

// Every failure line of the shared tool library names the same module and
// source; only the check, message, line and error value differ.
inline void varnel_bail(const char* check, const char* message,
                        std::int64_t line, std::int32_t error) {
  report_failure("varnel", check, "bail", message, "quandor/varnel", line,
                 error);
}

inline void varnel_bail(const layouts::failure_site& site, const char* message,
                        std::int32_t error) {
  varnel_bail(site.check, message, site.line, error);
}
