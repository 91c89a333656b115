#include "quandor/failure.h"

#include <mach/mach_error.h>

#include <iostream>

const char* error_text(std::int32_t error) {
  const char* text = mach_error_string(error);
  return text != nullptr ? text : "(null)";
}

void report_failure(const char* module, const char* check, const char* function,
                    const char* message, const char* file, std::int64_t line,
                    std::int32_t error) {
  std::ostream& out = std::cerr;
  out << "Assertion failed: " << module << ": ";
  if (check != nullptr) out << "Check failed: " << check << " ";
  if (function != nullptr) out << function << " ";
  if (message != nullptr) out << message << " ";
  if (file != nullptr && line != 0) out << file << ":" << line;
  if (error != 0) {
    // The base is left as set, on purpose: later numbers on standard error,
    // line numbers included, come out in hexadecimal too.
    out << " " << error_text(error) << " (" << std::hex << std::showbase
        << error << ")";
  }
  out << std::endl;
}
