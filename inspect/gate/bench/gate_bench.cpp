// The gate over a million harvests a side: rows as the tables write them
// (three clicks at most, two categories, lost records, damage, failure
// lines) parsed, the samples judged, the report printed. One core.

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <string>

#include "inspect/gate/gate_outputs.h"
#include "inspect/gate/statistics.h"

namespace {

using namespace inspect::gate;

std::string harvest_row(std::mt19937_64& rng, int side, std::uint64_t index, double asset_median) {
  std::lognormal_distribution<double> asset(std::log(asset_median), 0.08),
      finger(std::log(40000.0), 0.35), held(std::log(90000.0), 0.25);
  std::string row;
  char part[256];
  std::snprintf(part, sizeof part,
                "{\"capture\":\"fleet/%d/phone-%08llu.txt\",\"capture_sha256\":\"%064llx\","
                "\"harvest\":1,\"harvests\":1,\"line\":1,\"clicks\":[",
                side, static_cast<unsigned long long>(index), static_cast<unsigned long long>(index));
  row += part;
  const int clicks = 1 + static_cast<int>(rng() % 3);
  for (int k = 1; k <= clicks; ++k) {
    std::snprintf(part, sizeof part,
                  "%s{\"click\":%d,\"finger_to_down_us\":%.0f,\"down_to_asset_us\":%.0f,"
                  "\"held_us\":%.0f,\"up_to_asset_us\":%.0f}",
                  k > 1 ? "," : "", k, finger(rng) * k, asset(rng), held(rng), asset(rng) - 15);
    row += part;
  }
  const unsigned span = 1000000 + static_cast<unsigned>(rng() % 2000000);
  std::snprintf(part, sizeof part,
                "],\"records_by_category\":[{\"category_id\":1,\"category\":\"control\",\"records\":%u,"
                "\"first_us\":5,\"last_us\":%u,\"span_us\":%u},{\"category_id\":7,\"category\":"
                "\"pkey\",\"records\":%u,\"first_us\":5,\"last_us\":%u,\"span_us\":%u}],",
                2 + static_cast<unsigned>(rng() % 8), span + 5, span,
                50 + static_cast<unsigned>(rng() % 250), span + 5, span);
  row += part;
  std::snprintf(part, sizeof part,
                "\"sequence_lost\":%u,\"failures\":0,\"cut\":null,\"damaged\":false,\"damage\":[%s]}",
                rng() % 8 == 0 ? static_cast<unsigned>(rng() % 25) : 0u,
                rng() % 50 == 0 ? "{\"kind\":\"cut_short\",\"lost\":true}" : "");
  row += part;
  return row;
}

void gate_million(benchmark::State& state) {
  const auto harvests = static_cast<std::uint64_t>(state.range(0));
  for (auto _ : state) {
    sample_builder builder;
    std::mt19937_64 rng(20261125);
    for (int side = 0; side < 2; ++side) {
      row_place place;
      place.side = side;
      for (std::uint64_t h = 0; h < harvests; ++h) {
        builder.add_row(table_kind::harvests, harvest_row(rng, side, h, side == 0 ? 600 : 618), place, h + 1);
        if (h % 25 == 0) {
          char failure[200];
          std::snprintf(failure, sizeof failure,
                        "{\"capture\":\"fleet/%d/phone-%08llu.txt\",\"capture_sha256\":\"%064llx\","
                        "\"harvest\":1,\"request\":\"HID report 0xe2\"}",
                        side, static_cast<unsigned long long>(h), static_cast<unsigned long long>(h));
          builder.add_row(table_kind::failures, failure, place, h / 25 + 1);
        }
      }
    }
    std::array<side_samples, 2> sides = builder.finish();
    const gate_report report = judge(sides, {});
    std::string text;
    write_text({report, {"a", harvests, harvests}, {"b", harvests, harvests}}, text);
    benchmark::DoNotOptimize(text);
    state.counters["metrics"] = static_cast<double>(report.metrics.size());
  }
  state.counters["harvests_a_side"] = static_cast<double>(harvests);
}
BENCHMARK(gate_million)->Arg(10000)->Arg(1000000)->Unit(benchmark::kSecond)->Iterations(1);

// The statistics alone on a million integer latencies a side.
void shift_and_rank_test(benchmark::State& state) {
  std::mt19937_64 rng(7);
  std::lognormal_distribution<double> a(std::log(600.0), 0.08), b(std::log(618.0), 0.08);
  std::vector<double> x(1000000), y(1000000);
  for (double& v : x) v = std::round(a(rng));
  for (double& v : y) v = std::round(b(rng));
  std::sort(x.begin(), x.end());
  std::sort(y.begin(), y.end());
  for (auto _ : state) {
    benchmark::DoNotOptimize(hodges_lehmann(x, y));
    benchmark::DoNotOptimize(mann_whitney(x, y));
  }
}
BENCHMARK(shift_and_rank_test)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
