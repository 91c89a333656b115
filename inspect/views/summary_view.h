#pragma once

// The capture in brief: the press and its latencies, checked against the
// checkpoint records; the records per category and source; lost and
// repeated sequence numbers; every failure line with what it means; and
// what the capture lacks. As text, or as one JSON object with the same
// content.

#include <string>
#include <string_view>

#include "inspect/views/capture_facts.h"

namespace inspect::views {

void write_summary_text(const capture_facts& facts, std::string_view input, std::string& out);
void write_summary_json(const capture_facts& facts, std::string_view input, std::string& out);

// "1.250" for 1250 µs, "-0.008" for -8.
std::string milliseconds_text(std::int64_t microseconds);

}  // namespace inspect::views
