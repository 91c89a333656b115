// Archive bytes through the member walk: every capture found is read to its
// end, under limits small enough that the cap and the bomb check are met;
// each problem names a kind that has words, and nothing is written anywhere.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "inspect/input/input_captures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The walk reads files: the input becomes one that lives in memory.
  static const int fd = memfd_create("fuzz_archive_walk", MFD_CLOEXEC);
  if (fd < 0) __builtin_trap();
  if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
    __builtin_trap();
  static const std::string path = "/proc/self/fd/" + std::to_string(fd);
  inspect::archive_limits limits;
  limits.max_capture_size = 1 << 20;
  limits.bomb_floor = 256 * 1024;
  limits.bomb_ratio = 50;
  static constexpr inspect::input_form forms[] = {inspect::input_form::harvest,
                                                  inspect::input_form::hex};
  inspect::input_captures captures(path, limits, forms);
  inspect::input_fault fault;
  if (!captures.open(fault)) return 0;
  std::uint64_t found = 0;
  char chunk[4096];
  for (inspect::found_capture capture; captures.next(capture);) {
    ++found;
    if (capture.source == nullptr) __builtin_trap();
    if (capture.member && capture.label != inspect::member_label(path, *capture.member))
      __builtin_trap();
    std::size_t got = 0;
    std::uint64_t total = 0;
    std::string why;
    while (capture.source->read(chunk, got, why) && got != 0) total += got;
    // Nothing past the cap ever comes out of an archive.
    if (captures.archive() && total > limits.max_capture_size) __builtin_trap();
  }
  if (!captures.archive() && found != 1) __builtin_trap();
  for (const inspect::member_problem& problem : captures.problems())
    if (inspect::problem_text(problem).empty()) __builtin_trap();
  return 0;
}
