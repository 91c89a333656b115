#pragma once

// Each metric's change from the baseline to the candidate, its interval,
// p- and q-value, and its outcome against the metric's budget; the verdict
// is the worst outcome.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/gate/fleet_samples.h"

namespace inspect::gate {

enum class unit { microseconds, records, records_per_second, share };
enum class bad_side { higher, either };
// Worst first: the verdict is the first of the metrics' outcomes.
enum class outcome { regressed, unknown, same, improved };
std::string_view outcome_name(outcome o);
std::string_view unit_name(unit u);

// A budget: `amount` percent (of the baseline's median; for shares,
// percentage points) or in the metric's own unit.
struct budget {
  double amount = 0;
  bool percent = false;
};

// Per family of metrics (the name up to its first dot): what it measures,
// which side is bad, and how large a change does not matter.
struct family_row {
  std::string_view family;
  unit measure;
  bad_side bad;
  budget allowed;
  std::string_view about;
};
inline constexpr family_row families[] = {
    {"finger_to_down_us", unit::microseconds, bad_side::higher, {2, true},
     "finger on to the click's button down, per click"},
    {"down_to_asset_us", unit::microseconds, bad_side::higher, {2, true},
     "button down to its asset, per click"},
    {"held_us", unit::microseconds, bad_side::either, {5, true}, "button down to up, per click"},
    {"up_to_asset_us", unit::microseconds, bad_side::higher, {2, true},
     "button up to its asset, per click"},
    {"sequence_lost", unit::records, bad_side::higher, {1, false},
     "profile records lost (sequence gaps) per harvest"},
    {"losing_records", unit::share, bad_side::higher, {1, true},
     "harvests that lost any profile record"},
    {"records_per_second", unit::records_per_second, bad_side::either, {5, true},
     "records per second of a category, over its span"},
    {"failed", unit::share, bad_side::higher, {1, true},
     "harvests with a failure line for a request"},
    {"damaged", unit::share, bad_side::higher, {1, true}, "captures damaged, by kind of damage"},
};
const family_row* family_of(std::string_view metric);

// "NAME=+2%", "NAME=+50us", "NAME=0.5": a metric's or a family's budget.
struct budget_setting {
  std::string name;
  budget value;
};
// Nothing, after `why` is set, when the text does not read.
std::optional<budget_setting> parse_budget(std::string_view text, std::string& why);

struct metric_result {
  std::string name;
  const family_row* family = nullptr;
  std::uint64_t n_baseline = 0, n_candidate = 0;
  std::optional<double> baseline, candidate;  // medians, or shares
  std::optional<double> change, ci_low, ci_high, p_value, q_value;
  double budget = 0;  // in the change's unit
  std::string budget_text;
  outcome result = outcome::unknown;
  std::optional<std::uint64_t> needed_per_side;  // for unknown: harvests a side that may decide
  std::span<const double> baseline_values, candidate_values;  // sorted; values metrics only
};

struct gate_report {
  std::vector<metric_result> metrics;  // worst outcome first, then by name
  outcome verdict = outcome::same;
};

inline constexpr double alpha = 0.05;
inline constexpr double level = 0.95;

// Sorts the sides' values in place; the report's spans point into them.
gate_report judge(std::array<side_samples, 2>& sides, std::span<const budget_setting> settings);

// 0 nothing regressed, 1 something regressed, 3 nothing regressed but
// something unknown.
int exit_status(outcome verdict);

}  // namespace inspect::gate
