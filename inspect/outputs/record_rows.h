#pragma once

// The JSON row of each profile record of a read capture: what `records`
// writes for a harvest capture, and the tables' records.jsonl with the
// capture's keys in front. One writer, so the two never differ.

#include <cstdint>
#include <functional>
#include <string_view>

#include "inspect/capture/capture_model.h"

namespace inspect {

// Each record of harvest `harvest`, in capture order: its ordinal in the
// capture (counted on from `ordinal`), its source where the capture says,
// its calendar time with the clock pair of its own text. `leading` holds
// JSON members written in front of the record's own.
void write_record_rows(const capture_model& model, std::size_t harvest, std::string_view leading,
                       std::uint64_t& ordinal, const std::function<void(std::string_view row)>& each);

}  // namespace inspect
