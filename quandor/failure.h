#pragma once

#include <cstdint>

// One failure line on standard error. Every pointer but `module` may be null;
// a zero `line` or `error` leaves that part out. The hexadecimal base set for
// the error value stays on standard error for the rest of the process.
void report_failure(const char* module, const char* check, const char* function,
                    const char* message, const char* file, std::int64_t line,
                    std::int32_t error);
