#pragma once

// The per-harvest samples of each side, read from the fleet tables' rows
// (harvests, failures, unreadable), whichever way the rows came: a dataset
// on disk, or captures turned into rows on the fly.

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace inspect::gate {

// What one side holds: per metric the values (one per harvest that has
// one), or for shares the harvests or captures that show the event.
struct side_samples {
  std::map<std::string, std::vector<double>, std::less<>> values;
  std::map<std::string, std::uint64_t, std::less<>> harvests_with;
  std::map<std::string, std::uint64_t, std::less<>> captures_with;
  std::uint64_t harvests = 0;
  std::uint64_t captures = 0;
};

// One dataset split in two by a label: rows whose label `key` is `values[0]`
// are the baseline, `values[1]` the candidate, the rest are left out.
struct label_split {
  std::string key;
  std::array<std::string, 2> values;
};
// "build=A,B"; nothing when it does not read so.
std::optional<label_split> parse_split(std::string_view text);

enum class table_kind { harvests, failures, unreadable };

// Where rows come from: the side they belong to (or -1: the split decides),
// a name grouping a harvests table with its failures table, and the
// key=value folders above them (a Hive partition's labels).
struct row_place {
  int side = -1;
  std::string group;
  std::vector<std::pair<std::string, std::string>> partition;
};

// A row that could not be used, for the printer: which table's line.
struct row_fault {
  table_kind table;
  std::string group;
  std::uint64_t line = 0;
  enum class kind { not_json, not_a_row, no_such_harvest } what;
};

class sample_builder {
 public:
  explicit sample_builder(std::optional<label_split> split = std::nullopt)
      : split_(std::move(split)) {}

  // One JSON Lines row; a group's harvests come before its failures.
  void add_row(table_kind table, std::string_view line, const row_place& place,
               std::uint64_t line_number);

  // The two sides, and the rows that could not be used.
  std::array<side_samples, 2> finish();
  const std::vector<row_fault>& faults() const { return faults_; }

 private:
  struct harvest_entry {
    int side;
    std::vector<std::string> failed;  // requests with a failure line, once each
  };
  struct capture_entry {
    int side;
    std::vector<std::string> damage;  // kinds, once each
  };
  void add_harvest(std::string_view line, const row_place& place, std::uint64_t number);
  void add_failure(std::string_view line, const row_place& place, std::uint64_t number);
  void add_unreadable(std::string_view line, const row_place& place, std::uint64_t number);
  int side_of(const row_place& place, const std::map<std::string, std::string, std::less<>>& labels) const;

  std::optional<label_split> split_;
  std::array<side_samples, 2> sides_;
  std::unordered_map<std::string, harvest_entry> harvests_;
  std::unordered_map<std::string, capture_entry> captures_;
  std::vector<row_fault> faults_;
};

// The metric names: per click a latency, and the families of the rest.
inline constexpr std::array<std::string_view, 4> latency_names = {
    "finger_to_down_us", "down_to_asset_us", "held_us", "up_to_asset_us"};
std::string click_metric(std::string_view latency, std::uint64_t click);

}  // namespace inspect::gate
