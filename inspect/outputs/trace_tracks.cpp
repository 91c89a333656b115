#include "inspect/outputs/trace_tracks.h"

#include <algorithm>

namespace inspect {
namespace {

constexpr std::uint32_t sensors = 2;
constexpr std::uint32_t nimbrel = 4;
constexpr std::uint32_t arguments_type = 3;
constexpr std::uint32_t sensor_data = 2;
constexpr std::uint32_t sensor_filtdata = 3;

bool fits(const thread_packer::slot& s, std::uint64_t from, std::uint64_t to) {
  for (const auto& [a, b] : s.spans) {
    const bool apart = to < a || b < from;
    const bool inside = from >= a && to <= b;
    const bool around = a >= from && b <= to;
    if (!apart && !inside && !around) return false;
  }
  return true;
}

constexpr sample_axes sample_table[] = {
    {sensors, 0, sensor_data, 0, {"x", "y", "z"}},
    {sensors, 0, sensor_filtdata, 0, {"x", "y", "z"}},
    {sensors, 1, sensor_data, 0, {"x", "y", "z"}},
    {sensors, 1, sensor_filtdata, 0, {"x", "y", "z"}},
    {sensors, 2, sensor_data, 0, {"x", "y", "z"}},
    {sensors, 2, sensor_filtdata, 0, {"x", "y", "z"}},
    {sensors, 3, sensor_data, 0, {"arg1"}},
    {sensors, 4, sensor_data, 0, {"arg1"}},
    {sensors, 5, sensor_data, 0, {"arg1", "arg2", "arg3"}},
    {sensors, 6, sensor_data, 0, {"arg1"}},
    // The nimbrel stage's samples, in and out, in its fixed-point scales.
    {nimbrel, 0, 0, 1.0 / 65536, {"x", "y", "z"}},
    {nimbrel, 0, 1, 1.0 / 4096, {"x", "y", "z"}},
};

}  // namespace

const sample_axes* samples_of(const record_row& row) {
  if (row.type() != arguments_type) return nullptr;
  for (const sample_axes& s : sample_table)
    if (s.category == row.category() && s.component == row.component() && s.event == row.event())
      return &s;
  return nullptr;
}

int thread_packer::place(const std::string& name, std::uint64_t from, std::uint64_t to) {
  int copy = 1;
  for (slot& s : slots_) {
    if (s.kind != name) continue;
    ++copy;
    if (fits(s, from, to)) {
      s.spans.emplace_back(from, to);
      return s.tid;
    }
  }
  std::string shown = copy == 1 ? name : name + " (" + std::to_string(copy) + ")";
  slots_.push_back({name, copy, std::move(shown), static_cast<int>(slots_.size()) + 1, {{from, to}}});
  return slots_.back().tid;
}

void thread_packer::reserve(const std::string& name) {
  if (std::none_of(slots_.begin(), slots_.end(), [&](const slot& s) { return s.kind == name; }))
    slots_.push_back({name, 1, name, static_cast<int>(slots_.size()) + 1, {}});
}

}  // namespace inspect
