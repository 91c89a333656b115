// Records per second of format_profile_record: one benchmark per decoder and
// record kind, and the realistic mix of a full drain.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "bench_phone.h"
#include "liblog_zol/ZOLProfile.h"

namespace {

struct record_kind {
  std::string_view name;
  std::uint32_t type_word;
  std::uint16_t context_version;  // pkey context records only; 0: any
};

// One record of each kind, taken from the full drain by its type word.
constexpr record_kind record_kinds[] = {
    {"execution/task-function", 0x00000009, 0},
    {"execution/function-timing", 0x00010305, 0},
    {"execution/workloop-trigger", 0x00020104, 0},
    {"trace/packet-fragment", 0x01000201, 0},
    {"trace/small-packet", 0x01010502, 0},
    {"sensors/arguments", 0x02000203, 0},
    {"sensors/client-configuration", 0x02000908, 0},
    {"sensors/dispatcher-configuration", 0x0200070c, 0},
    {"sensors/no-payload", 0x02020a07, 0},
    {"orbix/function-timing", 0x03000005, 0},
    {"nimbrel/data-in", 0x04000003, 0},
    {"nimbrel/data-out", 0x04000103, 0},
    {"interrupt/arguments", 0x05000003, 0},
    {"uart/small-packet", 0x06010102, 0},
    {"pkey/trace", 0x07000003, 0},
    {"pkey/latency-trace", 0x07030203, 0},
    {"pkey/input-packet", 0x07000202, 0},
    {"pkey/status-event", 0x07000302, 0},
    {"pkey/other-event", 0x07001002, 0},
    {"pkey/context-v3", 0x0700010a, 3},
    {"pkey/context-v4", 0x0701010a, 4},
    {"pkey/context-v5", 0x0700010a, 5},
    {"pkey/context-v7", 0x0701010a, 7},
    {"control/table-entry", 0x0800000b, 0},
    {"unknown-category", 0x0c010407, 0},
};

std::uint32_t u32_at(const record_bytes& record, std::size_t offset) {
  std::uint32_t value;
  std::memcpy(&value, record.data() + offset, sizeof value);
  return value;
}

const record_bytes& record_of(const record_kind& kind) {
  for (const record_bytes& record : full_drain_records()) {
    if (u32_at(record, 0) != kind.type_word) continue;
    if (kind.context_version != 0 && (u32_at(record, 16) & 0xffff) != kind.context_version)
      continue;
    return record;
  }
  std::fprintf(stderr, "kelvra_bench: no %.*s record in the full drain\n",
               static_cast<int>(kind.name.size()), kind.name.data());
  std::exit(2);
}

void set_record_rate(benchmark::State& state) {
  state.counters["records/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void format_one_kind(benchmark::State& state, const record_kind& kind) {
  const record_bytes record = record_of(kind);
  for (auto _ : state) {
    std::string line = format_profile_record(record.data());
    benchmark::DoNotOptimize(line);
  }
  set_record_rate(state);
}

void format_mix(benchmark::State& state) {
  const auto& records = full_drain_records();
  std::size_t next = 0;
  for (auto _ : state) {
    std::string line = format_profile_record(records[next].data());
    benchmark::DoNotOptimize(line);
    if (++next == records.size()) next = 0;
  }
  set_record_rate(state);
}

}  // namespace

void register_format_benchmarks() {
  benchmark::RegisterBenchmark("format/mix", format_mix);
  for (const record_kind& kind : record_kinds)
    benchmark::RegisterBenchmark(("format/" + std::string(kind.name)).c_str(),
                                 [&kind](benchmark::State& state) { format_one_kind(state, kind); });
}
