#include <algorithm>

#include "inspect/capture/fact_builders.h"

namespace inspect {
namespace {

// Sequence numbers in capture order, cut into runs. A run ends where the
// capture says the source changes, where the numbers restart below the
// run's lowest, or where they jump ahead while time goes back: another
// source's numbering.
class run_builder {
 public:
  run_builder(const harvest_model& harvest, const harvest_facts& facts) : harvest_(harvest), facts_(facts) {}

  std::vector<sequence_run> build() {
    for (std::size_t i = 0; i < facts_.records.size(); ++i) {
      const record_row& row = facts_.records[i];
      if (i == 0 || starts_run(row)) open(i);
      add(i);
    }
    if (!runs_.empty()) close();
    return std::move(runs_);
  }

 private:
  struct number {
    std::int64_t value;  // unwrapped across 2^32
    std::size_t record;
  };

  std::int64_t unwrap(std::uint32_t sequence) const {
    // The signed distance from the last number, modulo 2^32.
    const auto step = static_cast<std::int32_t>(sequence - static_cast<std::uint32_t>(last_));
    return last_ + step;
  }

  bool starts_run(const record_row& row) const {
    const record_row& previous = facts_.records[numbers_.back().record];
    if (row.source != previous.source) return true;
    const std::int64_t value = unwrap(row.sequence);
    if (value < lowest_) return true;
    return value > last_ + 1 && row.timestamp < previous.timestamp;
  }

  void open(std::size_t record) {
    if (!runs_.empty()) close();
    const record_row& row = facts_.records[record];
    runs_.emplace_back();
    runs_.back().source = row.source;
    runs_.back().first_record = record;
    runs_.back().first_line = row.line;
    numbers_.clear();
    last_ = row.sequence;
    lowest_ = last_;
  }

  void add(std::size_t record) {
    const record_row& row = facts_.records[record];
    const std::int64_t value = numbers_.empty() ? last_ : unwrap(row.sequence);
    if (!numbers_.empty() && value <= last_) backward_.push_back(record);
    numbers_.push_back({value, record});
    last_ = value;
    lowest_ = std::min(lowest_, value);
    ++runs_.back().records;
  }

  void close() {
    sequence_run& run = runs_.back();
    std::vector<number> sorted = numbers_;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const number& a, const number& b) { return a.value < b.value; });
    run.lowest = static_cast<std::uint32_t>(sorted.front().value);
    run.highest = static_cast<std::uint32_t>(sorted.back().value);
    for (std::size_t i = 1; i < sorted.size(); ++i) {
      const number& before = sorted[i - 1];
      const number& now = sorted[i];
      if (now.value == before.value) {
        const record_row& first = facts_.records[before.record];
        const record_row& second = facts_.records[now.record];
        const bool same = std::equal(record_bytes(harvest_, first), record_bytes(harvest_, first) + 48,
                                     record_bytes(harvest_, second));
        run.repeats.push_back({second.sequence, second.line, same});
      } else if (now.value > before.value + 1) {
        const auto missing = static_cast<std::uint64_t>(now.value - before.value - 1);
        run.gaps.push_back({static_cast<std::uint64_t>(before.value) & 0xffffffffu, missing});
        run.lost += missing;
      }
    }
    std::sort(run.repeats.begin(), run.repeats.end(),
              [](const sequence_repeat& a, const sequence_repeat& b) { return a.line < b.line; });
    // A step back that lands on a number not seen before fills a gap: the
    // record came late.
    for (const std::size_t record : backward_) {
      const std::uint64_t line = facts_.records[record].line;
      const auto at = std::lower_bound(
          run.repeats.begin(), run.repeats.end(), line,
          [](const sequence_repeat& r, std::uint64_t l) { return r.line < l; });
      if (at == run.repeats.end() || at->line != line) ++run.out_of_order;
    }
    backward_.clear();
  }

  const harvest_model& harvest_;
  const harvest_facts& facts_;
  std::vector<sequence_run> runs_;
  std::vector<number> numbers_;
  std::vector<std::size_t> backward_;
  std::int64_t last_ = 0;
  std::int64_t lowest_ = 0;
};


}  // namespace

std::vector<sequence_run> build_runs(const harvest_model& harvest, const harvest_facts& facts) {
  return run_builder(harvest, facts).build();
}

}  // namespace inspect
