#pragma once

// The parts of a harvest's facts that take building: its sequence runs, and
// its press checked against the checkpoint records.

#include <vector>

#include "inspect/capture/capture_facts.h"
#include "inspect/capture/capture_model.h"

namespace inspect {

inline constexpr std::uint32_t controller_category = 7;   // pkey
inline constexpr std::uint32_t checkpoint_component = 3;  // pkey latency
inline constexpr std::uint32_t trace_point_type = 3;

std::vector<sequence_run> build_runs(const harvest_model& harvest, const harvest_facts& facts);

press_chain build_press_chain(const harvest_facts& facts, const press_stats& stats);

}  // namespace inspect
