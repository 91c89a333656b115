// compare on the full drain (23,650 profile lines) against itself: from the
// two captures' texts to the comparison's output it must take well under a
// second. Built with KELVRA_BENCH (the release preset); run
// build/release/inspect/outputs/compare_bench.

#include <benchmark/benchmark.h>

#include <string>

#include "inspect/outputs/bench/full_drain.h"
#include "inspect/outputs/compare_printer.h"

namespace {

using bench::full_drain;
using bench::read_full_drain;

enum class form { text, json, page };

std::string printed(const inspect::comparison& c, form shape) {
  std::string out;
  switch (shape) {
    case form::text: inspect::write_comparison(c, *inspect::text_compare_printer(out)); break;
    case form::json: inspect::write_comparison(c, *inspect::json_compare_printer(out)); break;
    case form::page: inspect::write_comparison(c, *inspect::page_compare_printer(out)); break;
  }
  return out;
}

// As the subcommand does it: both captures read, compared, printed.
void whole_compare(benchmark::State& state, form shape) {
  for (auto _ : state) {
    const inspect::capture_model a = read_full_drain();
    const inspect::capture_model b = read_full_drain();
    const std::string out = printed(inspect::compare_captures(a, 0, b, 0, {}), shape);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * 2 * 23650);
}

// The comparison and its printing alone, the captures read once.
void compare_only(benchmark::State& state) {
  const inspect::capture_model a = read_full_drain();
  const inspect::capture_model b = read_full_drain();
  for (auto _ : state) {
    const std::string out = printed(inspect::compare_captures(a, 0, b, 0, {}), form::text);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * 2 * 23650);
}

BENCHMARK_CAPTURE(whole_compare, text, form::text)
    ->Name("full_drain/compare")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(whole_compare, json, form::json)
    ->Name("full_drain/compare_json")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(whole_compare, page, form::page)
    ->Name("full_drain/compare_html")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(compare_only)->Name("full_drain/compare_only")->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
