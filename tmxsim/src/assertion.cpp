// The C library's assertion entry as the phone has it: one line straight to
// the standard error descriptor, then abort.

#include <assert.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

extern "C" void __assert_rtn(const char* function, const char* file, int line,
                             const char* expression) {
  char text[1024];
  const int size =
      function != nullptr
          ? std::snprintf(text, sizeof text,
                          "Assertion failed: (%s), function %s, file %s, line %d.\n",
                          expression, function, file, line)
          : std::snprintf(text, sizeof text, "Assertion failed: (%s), file %s, line %d.\n",
                          expression, file, line);
  if (size > 0) {
    const std::size_t length = std::min(static_cast<std::size_t>(size), sizeof text - 1);
    // Nothing is left to do about a failed write: the process ends next.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, length);
  }
  std::abort();
}
