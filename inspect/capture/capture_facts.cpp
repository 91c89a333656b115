#include "inspect/capture/capture_facts.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "inspect/capture/capture_model.h"
#include "inspect/capture/fact_builders.h"
#include "liblog_zol/calendar_time.h"
#include "liblog_zol/json_printer.h"
#include "liblog_zol/name_tables.h"
#include "liblog_zol/profile_decoder.h"
#include "liblog_zol/profile_record.h"

namespace inspect {
namespace {

bool is_digits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(),
                                      [](char c) { return c >= '0' && c <= '9'; });
}

std::string labelled(std::string_view name, std::string_view kind) {
  if (!is_digits(name)) return std::string(name);
  return std::string(kind) + " " + std::string(name);
}

// The button controller first: the press is its story. Then by id.
std::uint64_t category_rank(std::uint32_t category) {
  return category == controller_category ? 0 : std::uint64_t{category} + 1;
}

void note_missing(harvest_facts& facts, const harvest_model& h, const capture_model& model) {
  auto failure_about = [&](request about) -> std::string {
    for (const failure_line& f : h.failures)
      if (f.about == about) return " (failure line " + std::to_string(f.line) + ")";
    return "";
  };
  if (!h.cut.empty()) facts.missing.push_back("the capture ends inside this harvest: " + h.cut);
  if (h.stats && h.stats->damaged)
    facts.missing.push_back("no statistics record (its block at line " + std::to_string(h.stats->line + 1) +
                            " is damaged): the press cannot be shown");
  else if (!h.stats || !h.stats->printed)
    facts.missing.push_back("no statistics record" + failure_about(request::stats) +
                            ": the press cannot be shown");
  if (!h.profile_banner)
    facts.missing.push_back("no profile step in the capture");
  else if (h.profile.empty())
    facts.missing.push_back("no profile records" + failure_about(request::profile_events) +
                            ": no tracks, and nothing to check the press against");
  if (!model.pair && !h.profile.empty())
    facts.missing.push_back(
        "no calendar time: the profile lines carry none and no --timesync was given");
  if (model.pair_given || model.clock.one_pair()) return;
  const recovered_clock& clock = model.clock;
  for (std::size_t i = 0; i < clock.segments.size(); ++i) {
    if (i == clock.main) continue;
    const clock_segment& segment = clock.segments[i];
    facts.missing.push_back(
        "the calendar times of " +
        (segment.first_line == segment.last_line ? "line " + std::to_string(segment.first_line)
                                                 : "lines " + std::to_string(segment.first_line) +
                                                       "-" + std::to_string(segment.last_line)) +
        " follow another clock pair (renewed, or edited) than the rest: times are shown with the "
        "pair of the most");
  }
  if (!clock.unreadable.empty())
    facts.missing.push_back(std::to_string(clock.unreadable.size()) +
                            " calendar time" + (clock.unreadable.size() == 1 ? "" : "s") +
                            " from line " + std::to_string(clock.unreadable.front()) +
                            " name no local time in this time zone (set TZ to the phone's)");
}

// The axis the views draw on: around finger on, else around the records'
// median time; what lies further off is counted and shown apart.
void place_on_axis(harvest_facts& facts) {
  std::optional<std::uint64_t> centre;
  if (facts.press && facts.press->stats.finger_on != 0) {
    centre = facts.press->stats.finger_on;
  } else if (!facts.records.empty()) {
    std::vector<std::uint64_t> times;
    times.reserve(facts.records.size());
    for (const record_row& row : facts.records) times.push_back(row.timestamp);
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    centre = *middle;
  }
  if (!centre) return;
  const auto near = [&](std::uint64_t t) {
    return (t > *centre ? t - *centre : *centre - t) <= axis_reach_us;
  };
  const auto extend = [&](std::uint64_t t) {
    if (!facts.earliest || t < *facts.earliest) facts.earliest = t;
    if (!facts.latest || t > *facts.latest) facts.latest = t;
  };
  for (record_row& row : facts.records) {
    row.on_axis = near(row.timestamp);
    if (!row.on_axis) {
      ++facts.off_axis;
      continue;
    }
    if (!facts.first_record || row.timestamp < *facts.first_record) facts.first_record = row.timestamp;
    if (!facts.latest_record || row.timestamp > *facts.latest_record) facts.latest_record = row.timestamp;
    extend(row.timestamp);
  }
  if (!facts.press) return;
  for (press_point& p : facts.press->points) {
    p.on_axis = near(p.time);
    if (p.on_axis) extend(p.time);
  }
}

// Which reader printed each record: the reader marks where the profile
// service's records end even when it cannot tell (a short first pass takes
// in the profiler log's records too); only a split inside the records, or a
// failed profiler log, says which source each came from.
bool sources_known(const harvest_model& h) {
  const bool profiler_failed = std::any_of(h.failures.begin(), h.failures.end(),
                                           [](const failure_line& f) {
                                             return f.about == request::profiler_log;
                                           });
  return h.events_end && (*h.events_end < h.profile.size() || profiler_failed);
}

void gather(harvest_model& h, const capture_model& model) {
  harvest_facts& facts = h.facts;
  facts = {};
  const bool known = sources_known(h);
  std::map<std::pair<std::uint64_t, std::uint32_t>, lane> lanes;
  std::map<std::uint32_t, category_count> categories;
  std::map<record_source, source_count> sources;
  facts.records.reserve(h.profile.size());
  for (std::size_t i = 0; i < h.profile.size(); ++i) {
    profile_entry& entry = h.profile[i];
    const zol::profile_record record(entry.bytes.data());
    entry.source = !known                ? record_source::unknown
                   : i < *h.events_end ? record_source::profile_service
                                         : record_source::profiler_log;
    record_row row;
    row.entry = i;
    row.line = entry.line;
    row.type_word = record.type_word();
    row.sequence = record.sequence_number();
    row.timestamp = record.timestamp();
    row.source = entry.source;
    facts.records.push_back(row);

    lane& l = lanes[{category_rank(row.category()), row.component()}];
    if (l.span.count == 0) {
      l.category = row.category();
      l.component = row.component();
      l.category_name = category_label(row.category());
      l.component_name = component_label(row.category(), row.component());
    }
    l.span.add(row.timestamp);
    category_count& c = categories[row.category()];
    if (c.span.count == 0) {
      c.category = row.category();
      c.name = category_label(row.category());
    }
    c.span.add(row.timestamp);
    if (known) {
      source_count& s = sources[row.source];
      s.source = row.source;
      s.span.add(row.timestamp);
    }
  }
  for (auto& [key, l] : lanes) facts.lanes.push_back(std::move(l));
  for (auto& [key, c] : categories) facts.categories.push_back(std::move(c));
  for (auto& [key, s] : sources) facts.sources.push_back(s);
  facts.runs = build_runs(h, facts);

  if (h.stats && h.stats->printed)
    facts.press = build_press_chain(facts, read_press_stats(h.stats->record));
  place_on_axis(facts);
  note_missing(facts, h, model);
}

}  // namespace

std::string checkpoint_label(std::uint32_t id) {
  return std::string(zol::lookup_name(zol::pkey_latency_checkpoints, id).view());
}


std::string_view source_name(record_source source) noexcept {
  switch (source) {
    case record_source::profile_service: return "profile";
    case record_source::profiler_log: return "ZOL_profile";
    case record_source::unknown: break;
  }
  return {};
}

void time_span::add(std::uint64_t timestamp) noexcept {
  if (count == 0 || timestamp < first) first = timestamp;
  if (count == 0 || timestamp > last) last = timestamp;
  ++count;
}

std::string category_label(std::uint32_t category) {
  return labelled(zol::decoder_for_category(category).category_name(category).view(), "category");
}

std::string component_label(std::uint32_t category, std::uint32_t component) {
  return labelled(zol::decoder_for_category(category).component_name(component).view(),
                  "component");
}

std::string event_label(const std::uint8_t* bytes) {
  const zol::profile_record record(bytes);
  const zol::profile_decoder& decoder = zol::decoder_for_category(record.category_id());
  if (record.category_id() == controller_category && record.type_id() == trace_point_type) {
    const std::uint32_t id = record.bytes().u32(16);
    const zol::name_text name = record.component_id() == checkpoint_component
                                    ? decoder.event_name(checkpoint_component, id)
                                    : zol::lookup_name(zol::pkey_trace_points, id);
    return labelled(name.view(), "trace point");
  }
  return labelled(decoder.event_name(record.component_id(), record.event_id()).view(), "event");
}

const std::uint8_t* record_bytes(const harvest_model& harvest, const record_row& row) noexcept {
  return harvest.profile[row.entry].bytes.data();
}

std::optional<std::string> calendar_of(const capture_model& model, std::uint64_t timestamp) {
  if (!model.pair) return std::nullopt;
  std::string text;
  if (!zol::iso_calendar_time(zol::calendar_microseconds(timestamp, *model.pair), text,
                             *model.zone))
    return std::nullopt;
  return text;
}


void gather_facts(capture_model& model) {
  for (harvest_model& harvest : model.harvests) gather(harvest, model);
}

}  // namespace inspect