// The views of the full drain (23,650 profile lines): each must take well
// under a second from the capture's text to its output. Built with
// KELVRA_BENCH (the release preset); run build/release/inspect/outputs/views_bench.

#include <benchmark/benchmark.h>

#include <string>

#include "inspect/outputs/bench/full_drain.h"
#include "inspect/outputs/summary_view.h"
#include "inspect/outputs/timeline_view.h"
#include "inspect/outputs/trace_view.h"

namespace {

using bench::full_drain;
using bench::read_full_drain;

enum class view { trace, summary, summary_json, timeline };

void write(const inspect::capture_model& model, view which, std::string& out) {
  switch (which) {
    case view::trace: inspect::write_trace(model, 0, out); break;
    case view::summary: inspect::write_summary(model, 0, *inspect::text_summary_printer(out)); break;
    case view::summary_json:
      inspect::write_summary(model, 0, *inspect::json_summary_printer(out));
      break;
    case view::timeline: inspect::write_timeline(model, 0, out); break;
  }
}

// From the capture's text to the view's, as the subcommand does it.
void whole_view(benchmark::State& state, view which) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    const inspect::capture_model model = read_full_drain();
    std::string out;
    write(model, which, out);
    bytes = out.size();
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["output_bytes"] = static_cast<double>(bytes);
  state.SetItemsProcessed(state.iterations() * 23650);
}

// The view alone, the capture read once.
void view_only(benchmark::State& state, view which) {
  const inspect::capture_model model = read_full_drain();
  for (auto _ : state) {
    std::string out;
    write(model, which, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * 23650);
}

void read_only(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(read_full_drain());
  state.SetItemsProcessed(state.iterations() * 23650);
}

BENCHMARK(read_only)->Name("full_drain/read_capture")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(whole_view, trace, view::trace)->Name("full_drain/trace")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(whole_view, summary, view::summary)->Name("full_drain/summary")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(whole_view, summary_json, view::summary_json)->Name("full_drain/summary_json")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(whole_view, timeline, view::timeline)->Name("full_drain/timeline")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(view_only, trace, view::trace)->Name("full_drain/trace_view_only")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(view_only, timeline, view::timeline)->Name("full_drain/timeline_view_only")->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
