#pragma once

// The facts of a harvest every output reads: its profile records in order
// with their sources, tracks, counts and sequence runs, and the press of the
// statistics record checked against the button controller's checkpoint
// records. Found once when the capture is read; the outputs only lay them
// out.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/capture/press_stats.h"
#include "inspect/input/problems.h"
#include "liblog_zol/clock_source.h"

namespace inspect {

enum class record_source { unknown, profile_service, profiler_log };

// "profile", "ZOL_profile"; empty when unknown.
std::string_view source_name(record_source source) noexcept;

struct record_row {
  std::size_t entry = 0;  // in harvest_model::profile
  std::uint64_t line = 0;
  std::uint32_t type_word = 0;
  std::uint32_t sequence = 0;
  std::uint64_t timestamp = 0;
  record_source source = record_source::unknown;
  bool on_axis = true;  // within reach of the press: see axis_reach_us
  // The clock pair its calendar time is shown with; none without one.
  std::optional<zol::timesync_pair> pair;

  std::uint32_t category() const noexcept { return type_word >> 24; }
  std::uint32_t component() const noexcept { return (type_word >> 16) & 0xff; }
  std::uint32_t event() const noexcept { return (type_word >> 8) & 0xff; }
  std::uint32_t type() const noexcept { return type_word & 0xff; }
};

// Names for people: the tables' own, else "category 12", "component 3".
std::string category_label(std::uint32_t category);
std::string component_label(std::uint32_t category, std::uint32_t component);
// The event's name; a trace point's own name for the button controller.
std::string event_label(const std::uint8_t* record);
// "ckp_PKEYButtonDown" for 2.
std::string checkpoint_label(std::uint32_t id);

struct time_span {
  std::size_t count = 0;
  std::uint64_t first = 0;  // earliest timestamp
  std::uint64_t last = 0;   // latest

  void add(std::uint64_t timestamp) noexcept;
};

// One track: the records of one component of one category.
struct lane {
  std::uint32_t category = 0;
  std::uint32_t component = 0;
  std::string category_name;
  std::string component_name;
  time_span span;
};

struct category_count {
  std::uint32_t category = 0;
  std::string name;
  time_span span;
};

struct source_count {
  record_source source = record_source::unknown;
  time_span span;
};

struct sequence_gap {
  std::uint64_t after = 0;    // the last number before the gap
  std::uint64_t missing = 0;  // numbers never seen
};

struct sequence_repeat {
  std::uint32_t sequence = 0;
  std::uint64_t line = 0;   // of the second record
  bool same_bytes = false;  // a duplicate, not just a reused number
};

// Records whose sequence numbers belong together: one source, or a stretch
// of the log between restarts of the numbering.
struct sequence_run {
  record_source source = record_source::unknown;
  std::size_t first_record = 0;  // index in capture_facts::records
  std::size_t records = 0;
  std::uint64_t first_line = 0;
  std::uint32_t lowest = 0;
  std::uint32_t highest = 0;
  std::uint64_t lost = 0;          // numbers in the run's range never seen
  std::size_t out_of_order = 0;    // steps back that are not repeats
  std::vector<sequence_gap> gaps;  // in number order
  std::vector<sequence_repeat> repeats;
};

// A statistics time checked against a checkpoint record.
struct checkpoint_match {
  std::size_t record = 0;  // index in capture_facts::records
  std::uint64_t timestamp = 0;
  std::int64_t offset = 0;  // checkpoint time minus statistics time
};

// The times of the statistics record, in the order of a press.
enum class point_kind {
  finger_on,
  start_haptics,
  button_down,
  button_up,
  down_asset,
  up_asset,
  finger_off,
  second_scan,
};

struct press_point {
  point_kind kind = point_kind::finger_on;
  unsigned click = 0;  // from 0; for the button and asset points
  std::uint64_t time = 0;
  std::optional<std::uint32_t> checkpoint;  // its checkpoint id, if it has one
  std::optional<checkpoint_match> match;
  bool on_axis = true;
};

enum class step_kind { finger_to_down, held, down_to_asset, up_to_asset };

struct press_step {
  step_kind kind = step_kind::held;
  unsigned click = 0;  // from 0
  std::size_t from = 0;  // in press_chain::points
  std::size_t to = 0;
  std::optional<std::uint64_t> latency_field;  // the record's own latency, if it has one
  // The same step between the two points' checkpoint records, when both
  // have one.
  std::optional<std::int64_t> checkpoint_latency;
};

// "finger on", "click 1 down", "click 1 down asset".
std::string point_label(const press_point& point);
// "finger on → click 1 down", "click 1 held", "click 1 down → asset".
std::string step_label(const press_step& step);
// Whether a point is one of a click's, and one of its assets.
bool click_point(point_kind kind) noexcept;
bool asset_point(point_kind kind) noexcept;

// Finger on to finger off, when the record has both and the finger left
// after it came.
struct touch_interval {
  std::uint64_t on = 0;
  std::uint64_t off = 0;
};

struct press_chain {
  press_stats stats;
  unsigned clicks = 0;  // clicks shown: the count, at most the record's three
  std::vector<press_point> points;
  std::vector<press_step> steps;
  std::optional<touch_interval> touch;
  // Where the press's time axis counts from: finger on, else its earliest
  // point on the axis.
  std::optional<std::uint64_t> origin;
  bool checked = false;  // some point has a checkpoint to compare with
  std::vector<problem> disagreements;
  std::vector<problem> notes;

  std::uint64_t duration(const press_step& step) const noexcept {
    return points[step.to].time - points[step.from].time;
  }
};

// Checkpoint times further than this from the statistics' are called out:
// the controller logs a checkpoint as it handles the edge, a few
// microseconds after the sensor saw it.
inline constexpr std::uint64_t checkpoint_tolerance_us = 50;
// A checkpoint further than this belongs to another edge or press.
inline constexpr std::uint64_t checkpoint_window_us = 5000;

// Times further than this from the press (or, without one, from the
// records' median time) cannot share its time axis: a sentinel or wild
// timestamp, a record years older than the rest. Views show them apart.
inline constexpr std::uint64_t axis_reach_us = 3600ull * 1000000;

// The sequence runs added up.
struct sequence_totals {
  std::uint64_t runs = 0;
  std::uint64_t records = 0;
  std::uint64_t lost = 0;
  std::uint64_t repeated = 0;
  std::uint64_t out_of_order = 0;
};

struct harvest_facts {
  std::vector<record_row> records;  // capture order
  std::vector<lane> lanes;          // display order
  std::vector<category_count> categories;
  // Records before this index came from the "profile" service, the rest
  // from the profiler log; none when the capture does not say.
  std::optional<std::size_t> source_split;
  std::vector<source_count> sources;  // empty when the capture does not say
  std::vector<sequence_run> runs;
  sequence_totals sequence;
  // Of every record, whatever the axis.
  time_span span;
  std::optional<press_chain> press;
  std::vector<problem> missing;
  // The capture's damage within this harvest's lines (indices in
  // capture_model::damage); what no line places goes with the last harvest.
  std::vector<std::size_t> damage;
  bool damaged = false;  // some of it lost part of the input
  // Of the times on the axis: the earliest and latest record's, and the
  // earliest and latest anything shown has; none for an empty harvest.
  std::optional<std::uint64_t> first_record;
  std::optional<std::uint64_t> latest_record;
  std::optional<std::uint64_t> earliest;
  std::optional<std::uint64_t> latest;
  std::size_t off_axis = 0;  // records off the axis

  const press_step* find_step(step_kind kind, unsigned click) const noexcept;
};

struct harvest_model;
struct capture_model;

// The facts of every harvest of a read capture.
void gather_facts(capture_model& model);

// ISO 8601 local time of a coprocessor time; none without a clock pair.
std::optional<std::string> calendar_of(const capture_model& model, std::uint64_t timestamp);

// The 48 bytes of a record row.
const std::uint8_t* record_bytes(const harvest_model& harvest, const record_row& row) noexcept;

}  // namespace inspect
