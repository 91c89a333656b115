#pragma once

#include <cstdint>

// The platform's text for a kernel result, or "(null)" where it has none, as
// the platform's own formatted output writes a missing text.
const char* error_text(std::int32_t error);

// One failure line on standard error. Every pointer but `module` may be null;
// a zero `line` or `error` leaves that part out. The hexadecimal base set for
// the error value stays on standard error for the rest of the process.
void report_failure(const char* module, const char* check, const char* function,
                    const char* message, const char* file, std::int64_t line,
                    std::int32_t error);
