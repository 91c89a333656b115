// The SHA-256 that tables takes of every capture and every table file, on
// this machine's CPU (callgrind's has no SHA instructions, so the
// instruction counts leave the hash out and this gives its time). Built with
// KELVRA_BENCH (the release preset); run build/release/inspect/input/content_hash_bench.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "inspect/input/content_hash.h"

namespace {

// Bytes `size` long, added in `chunk`-byte pieces as a reader hands them on.
void hash_bytes(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto chunk = static_cast<std::size_t>(state.range(1));
  std::vector<char> bytes(size);
  std::uint32_t x = 2463534242u;
  for (char& b : bytes) {
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    b = static_cast<char>(x);
  }
  for (auto _ : state) {
    inspect::content_hash hash;
    for (std::size_t at = 0; at < size; at += chunk) hash.add(bytes.data() + at, std::min(chunk, size - at));
    benchmark::DoNotOptimize(hash.hex());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

// The default phone's capture (297 KB) read in the reader's 256 KB chunks;
// a large table file written a capture's rows at a time.
BENCHMARK(hash_bytes)->Args({297 * 1024, 256 * 1024})->Args({64 << 20, 680 * 1024})
    ->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
