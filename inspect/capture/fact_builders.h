#pragma once

// The parts of a harvest's facts that take building: its sequence runs, and
// its press checked against the checkpoint records.

#include <vector>

#include "inspect/capture/capture_facts.h"
#include "inspect/capture/capture_model.h"
#include "liblog_zol/name_tables.h"

namespace inspect {

inline constexpr std::uint32_t controller_category = zol::pkey_category;
inline constexpr std::uint32_t checkpoint_component = zol::pkey_latency_component;
inline constexpr std::uint32_t trace_point_type = zol::pkey_trace_point_type;

std::vector<sequence_run> build_runs(const harvest_model& harvest, const harvest_facts& facts);

press_chain build_press_chain(const harvest_facts& facts, const press_stats& stats);

}  // namespace inspect
