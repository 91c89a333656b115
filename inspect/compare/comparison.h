#pragma once

// Two harvests side by side: what differs between them, part by part in
// the order of a harvest, found once from the two capture models as typed
// rows; outputs/compare_view.cpp describes them once for the printers. Timestamps, sequence
// numbers and calendar times are never compared: they differ between any
// two harvests of one phone. The latencies made from them are.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "inspect/capture/capture_model.h"
#include "quandor/layouts/record_layouts.h"

namespace inspect {

enum class compare_part : std::uint8_t {
  press,
  statistics,
  state_dumps,
  records,
  events,
  sequence_numbers,
  assets,
  hid_reports,
  failures,
};

struct compare_part_row {
  compare_part part;
  std::string_view key;    // for --ignore and the JSON
  std::string_view title;  // for people
};

// In harvest order; part p is row p.
inline constexpr compare_part_row compare_parts[] = {
    {compare_part::press, "press", "press"},
    {compare_part::statistics, "statistics", "statistics"},
    {compare_part::state_dumps, "state_dumps", "state dumps"},
    {compare_part::records, "records", "profile records"},
    {compare_part::events, "events", "event names"},
    {compare_part::sequence_numbers, "sequence_numbers", "sequence numbers lost and repeated"},
    {compare_part::assets, "assets", "haptic asset table"},
    {compare_part::hid_reports, "hid_reports", "HID reports"},
    {compare_part::failures, "failures", "failure lines"},
};
inline constexpr std::size_t compare_part_count = std::size(compare_parts);
static_assert([] {
  for (std::size_t i = 0; i < compare_part_count; ++i)
    if (static_cast<std::size_t>(compare_parts[i].part) != i) return false;
  return true;
}());

std::optional<compare_part> part_of_key(std::string_view key) noexcept;

// One compared value.
enum class verdict : std::uint8_t {
  same,
  within_tolerance,  // a latency off by no more than --tolerance-us
  ignored,           // a timestamp
  differs,
};

// A part as a whole.
enum class part_status : std::uint8_t {
  no_difference,
  agrees,  // what differs is within the tolerance or never compared
  differs,
  ignored,  // differs, but --ignore names it
};

std::string_view verdict_key(verdict v) noexcept;       // "same", "within_tolerance", ...
std::string_view status_key(part_status s) noexcept;    // "no_difference", ...
std::string_view status_label(part_status s) noexcept;  // "no difference", ...

struct compare_options {
  std::uint64_t tolerance_us = 0;
  std::vector<compare_part> ignore;
};

// A press latency of the two statistics records.
struct latency_change {
  unsigned click = 0;  // from 0
  step_kind step = step_kind::held;
  std::string label;                       // "click 1 down → asset"
  std::optional<std::uint64_t> a, b;       // none: that record has no such step
  std::optional<std::int64_t> difference;  // b - a, µs
  std::optional<double> percent;           // of a; none when a is 0
  verdict result = verdict::same;
};

struct press_comparison {
  std::optional<std::uint64_t> clicks_a, clicks_b;  // none: no statistics record
  verdict clicks = verdict::same;
  std::vector<latency_change> latencies;  // click by click, in press order
};

// A field of a record by its layout name, where the two differ.
struct field_change {
  std::string where;  // the block for people: "lyn 0xd0", "ASSET [Slow][SingleUp]"
  std::string_view name;
  std::optional<std::size_t> element;  // of an array field: a click edge
  std::optional<std::size_t> entry;    // of a table, which `where` names
  std::optional<layouts::field_value> a, b;
  verdict result = verdict::differs;
};

// A block one capture printed and the other did not.
struct one_sided_block {
  std::string where;
  bool in_a = false;
  std::size_t fields = 0;
};

struct field_comparison {
  std::vector<one_sided_block> one_sided;
  std::vector<field_change> changes;
  std::size_t unchanged = 0;
};

struct component_rate {
  std::string category;
  std::string component;
  std::size_t a = 0, b = 0;
  std::optional<double> a_per_second, b_per_second;  // none without a span
  verdict result = verdict::same;
};

struct records_comparison {
  std::size_t a = 0, b = 0;
  std::uint64_t a_span_us = 0, b_span_us = 0;  // of the records on the axis
  std::vector<component_rate> components;      // in display order, A's first
};

struct event_name {
  std::string category;
  std::string component;
  std::string event;
};

struct events_comparison {
  std::vector<event_name> only_a, only_b;
  std::size_t shared = 0;
};

struct sequence_comparison {
  sequence_totals a, b;
  verdict result = verdict::same;
};

struct report_change {
  std::uint8_t id = 0;
  const hid_report* a = nullptr;  // none: the harvest never asked for it
  const hid_report* b = nullptr;
  std::vector<std::size_t> offsets;  // bytes both have that differ
  verdict result = verdict::same;
};

struct hid_comparison {
  std::vector<report_change> reports;  // in request order
};

// Failure lines matched by module, check, source line and result.
struct failure_comparison {
  std::vector<const failure_line*> only_a, only_b;
  std::vector<std::pair<const failure_line*, const failure_line*>> both;
};

struct compare_side {
  const capture_model* model = nullptr;
  std::size_t harvest = 0;  // from 0

  const harvest_model& in() const { return model->harvests[harvest]; }
};

struct comparison {
  compare_side a, b;
  compare_options options;
  press_comparison press;
  field_comparison statistics, state_dumps, assets;
  records_comparison records;
  events_comparison events;
  sequence_comparison sequence;
  hid_comparison hid;
  failure_comparison failures;
  std::array<part_status, compare_part_count> status{};

  part_status status_of(compare_part part) const { return status[static_cast<std::size_t>(part)]; }
  bool agree() const;
};

// `harvest_a` and `harvest_b` must be harvests of their models, which
// must outlive the result.
comparison compare_captures(const capture_model& a, std::size_t harvest_a, const capture_model& b,
                            std::size_t harvest_b, const compare_options& options);

// The parts of the comparison found in files of their own.
press_comparison compare_press(const harvest_facts& a, const harvest_facts& b,
                               std::uint64_t tolerance_us);
field_comparison compare_statistics(const harvest_model& a, const harvest_model& b,
                                    std::uint64_t tolerance_us);
field_comparison compare_state_dumps(const harvest_model& a, const harvest_model& b);
field_comparison compare_assets(const harvest_model& a, const harvest_model& b);
hid_comparison compare_hid_reports(const harvest_model& a, const harvest_model& b);
records_comparison compare_records(const harvest_facts& a, const harvest_facts& b);
events_comparison compare_events(const harvest_model& a, const harvest_model& b);
sequence_comparison compare_sequences(const harvest_facts& a, const harvest_facts& b);
failure_comparison compare_failures(const harvest_model& a, const harvest_model& b);

}  // namespace inspect
