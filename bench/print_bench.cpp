// Records per second through print_profile_record: the formatter, the
// calendar-time lookup, the CoreFoundation string and puts, into /dev/null.

#include <benchmark/benchmark.h>

#include <cstddef>

#include "bench_phone.h"
#include "quandor/profile_retrieval.h"

namespace {

void print_mix(benchmark::State& state) {
  const auto& records = full_drain_records();
  std::size_t next = 0;
  const stdout_to_null quiet;
  for (auto _ : state) {
    print_profile_record(records[next].data());
    if (++next == records.size()) next = 0;
  }
  state.counters["records/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

}  // namespace

void register_print_benchmarks() {
  benchmark::RegisterBenchmark("print_profile_record/mix", print_mix);
}
