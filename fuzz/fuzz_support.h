#pragma once

// Included once by each fuzz target that runs the tool's code.

#include <cstdio>
#include <iostream>
#include <streambuf>

#include "tmxsim/control.h"

// The code under test writes reports to standard output and failure lines to
// standard error. Both are thrown away, but standard error itself stays open
// for the fuzzer's and the sanitizers' own reports. The streams stay good, so
// that every piece of every line is still formatted.
class discard_buffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static discard_buffer discard;
  std::cout.rdbuf(&discard);
  std::cerr.rdbuf(&discard);
  if (std::freopen("/dev/null", "w", stdout) == nullptr) __builtin_trap();
  return 0;
}

// A finding unless the run gave back every handle, connection and
// CoreFoundation object, and misused none.
inline void trap_unless_nothing_held() {
  const tmxsim::audit_counts held = tmxsim::audit();
  if (held.io_objects || held.connections || held.cf_objects || held.misuse) __builtin_trap();
}
