#pragma once

// The comparison of two harvests handed to a printer part by part, in the
// order of a harvest: text for people, one JSON object for tools, or a
// page with both presses drawn on one time axis.

#include <memory>
#include <string>

#include "inspect/outputs/compare_facts.h"

namespace inspect {

inline constexpr int compare_schema_version = 2;

class compare_printer {
 public:
  virtual ~compare_printer() = default;
  // What was compared, and how.
  virtual void heading(const comparison& c) = 0;
  // Each part under its row and status.
  virtual void press(const compare_part_row& part, part_status status, const comparison& c) = 0;
  virtual void fields(const compare_part_row& part, part_status status,
                      const field_comparison& f) = 0;
  virtual void records(const compare_part_row& part, part_status status,
                       const records_comparison& r) = 0;
  virtual void events(const compare_part_row& part, part_status status,
                      const events_comparison& e) = 0;
  virtual void sequences(const compare_part_row& part, part_status status,
                         const sequence_comparison& s) = 0;
  virtual void reports(const compare_part_row& part, part_status status,
                       const hid_comparison& h) = 0;
  virtual void failures(const compare_part_row& part, part_status status,
                        const failure_comparison& f) = 0;
  // Whether they agree.
  virtual void finish(const comparison& c) = 0;
};

void write_comparison(const comparison& c, compare_printer& out);

// For people, as text and the page show them: "612", "0.875", "Slow".
std::string field_text(const layouts::field_value& value);
// "play_asset_latency[2]", "slot".
std::string field_name_text(const field_change& change);
// "612 µs"; "-" for none.
std::string micros_text(std::optional<std::uint64_t> value);
// "36.5/s"; "-" for none.
std::string rate_text(std::optional<double> per_second);
// "21 bytes", "failed", "not asked".
std::string report_text(const hid_report* report);
// "+0.16%"; "-" for none.
std::string percent_text(std::optional<double> percent);
// "within tolerance", "ignored (a timestamp)"...
std::string_view verdict_label(verdict v) noexcept;

// Each writes into `out`.
std::unique_ptr<compare_printer> text_compare_printer(std::string& out);
std::unique_ptr<compare_printer> json_compare_printer(std::string& out);
std::unique_ptr<compare_printer> page_compare_printer(std::string& out);

}  // namespace inspect
