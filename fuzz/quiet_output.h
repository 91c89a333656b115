#pragma once

#include <cstdio>
#include <iostream>
#include <streambuf>

// The code under test writes reports to standard output and failure lines to
// standard error. Both are thrown away, but standard error itself stays open
// for the fuzzer's and the sanitizers' own reports.
class discard_buffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

inline void silence_reports() {
  static discard_buffer discard;
  std::cout.rdbuf(&discard);
  std::cerr.rdbuf(&discard);
  if (std::freopen("/dev/null", "w", stdout) == nullptr) __builtin_trap();
}
