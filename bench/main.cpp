#include <benchmark/benchmark.h>

#include <cstdio>

#include "bench_phone.h"

int main(int argc, char** argv) {
  // Lines go out in blocks, as they do when kelvra writes to a pipe or a
  // file; a terminal would otherwise make every line a write of its own.
  std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  load_full_drain();
  register_format_benchmarks();
  register_print_benchmarks();
  register_hexdump_benchmarks();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
