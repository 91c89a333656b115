// Bytes per second of the hex dumps, into /dev/null.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bench_phone.h"
#include "liblog_zol/ZOLProfile.h"
#include "quandor/hexdump.h"

namespace {

// A state-dump-sized reply of log bytes: all byte values, all line shapes.
void hexdump_reply(benchmark::State& state, const char* label) {
  const auto& records = full_drain_records();
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; bytes.size() < static_cast<std::size_t>(state.range(0)); ++i)
    bytes.insert(bytes.end(), records[i].begin(), records[i].end());
  bytes.resize(static_cast<std::size_t>(state.range(0)));
  const stdout_to_null quiet;
  for (auto _ : state) hexdump(bytes.data(), bytes.size(), label);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void profile_hexdump(benchmark::State& state) {
  const auto& records = full_drain_records();
  std::size_t next = 0;
  const stdout_to_null quiet;
  for (auto _ : state) {
    tmx_profile_hexdump("prof-event ", records[next].data());
    if (++next == records.size()) next = 0;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * 48);
}

}  // namespace

void register_hexdump_benchmarks() {
  benchmark::RegisterBenchmark("hexdump/unlabelled", hexdump_reply, nullptr)->Arg(4096);
  benchmark::RegisterBenchmark("hexdump/labelled", hexdump_reply, "lyn")->Arg(4096);
  benchmark::RegisterBenchmark("tmx_profile_hexdump", profile_hexdump);
}
