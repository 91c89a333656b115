#pragma once

// The gate's report for people (aligned text), for tools (one JSON object,
// inspect/schema/gate.schema.json) and as one self-contained HTML page.

#include <string>

#include "inspect/gate/verdict.h"

namespace inspect::gate {

// What each side was read from.
struct side_summary {
  std::string source;
  std::uint64_t harvests = 0;
  std::uint64_t captures = 0;
};

struct gate_document {
  const gate_report& report;
  side_summary baseline, candidate;
};

// A metric's number in its unit; `change` signs it.
std::string value_text(double value, unit measure, bool change);
// "[low, high]" in the change's unit; empty without bounds.
std::string interval_text(const metric_result& m);

void write_text(const gate_document& document, std::string& out);
void write_json(const gate_document& document, std::string& out);
void write_page(const gate_document& document, std::string& out);

}  // namespace inspect::gate
