// The views of the full drain (23,650 profile lines): each must take well
// under a second from the capture's text to its output. Built with
// KELVRA_BENCH (the release preset); run build/release/inspect/views/views_bench.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "inspect/capture/capture_reader.h"
#include "inspect/views/capture_facts.h"
#include "inspect/views/summary_view.h"
#include "inspect/views/timeline_view.h"
#include "inspect/views/trace_view.h"

namespace {

const std::string& full_drain() {
  static const std::string text = [] {
    std::ifstream file(KELVRA_FULL_DRAIN_CAPTURE, std::ios::binary);
    std::ostringstream all;
    all << file.rdbuf();
    return all.str();
  }();
  return text;
}

inspect::capture_model read_full_drain() {
  inspect::capture_model model;
  inspect::input_fault fault;
  if (!inspect::read_capture_text(full_drain(), "full-drain", {.year = 2026}, model, fault))
    std::fprintf(stderr, "%s\n", inspect::fault_line(fault).c_str());
  return model;
}

enum class view { trace, summary, summary_json, timeline };

void write(const inspect::views::capture_facts& facts, view which, std::string& out) {
  switch (which) {
    case view::trace: inspect::views::write_trace(facts, out); break;
    case view::summary: inspect::views::write_summary_text(facts, "full-drain", out); break;
    case view::summary_json: inspect::views::write_summary_json(facts, "full-drain", out); break;
    case view::timeline: inspect::views::write_timeline(facts, out); break;
  }
}

// From the capture's text to the view's, as the subcommand does it.
void whole_view(benchmark::State& state, view which) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    const inspect::capture_model model = read_full_drain();
    const inspect::views::capture_facts facts = inspect::views::gather_facts(model, {});
    std::string out;
    write(facts, which, out);
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
    const inspect::views::capture_facts facts = inspect::views::gather_facts(model, {});
    std::string out;
    write(facts, which, out);
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
