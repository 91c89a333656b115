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
  const auto failure_of = [&](request about) -> std::int64_t {
    for (const failure_line& f : h.failures)
      if (f.about == about) return static_cast<std::int64_t>(f.line);
    return 0;
  };
  const auto add = [&](problem found) { facts.missing.push_back(std::move(found)); };
  if (!h.cut.empty()) add({.kind = problem_kind::harvest_incomplete, .subject = h.cut});
  if (h.stats && h.stats->damaged) {
    add({.kind = problem_kind::statistics_damaged,
         .line = h.stats->line + 1,
         .numbers = {static_cast<std::int64_t>(h.stats->line + 1), 0}});
  } else if (!h.stats || !h.stats->printed) {
    const std::int64_t failed = failure_of(request::stats);
    add({.kind = failed ? problem_kind::statistics_failed : problem_kind::no_statistics,
         .line = static_cast<std::uint64_t>(failed),
         .numbers = {failed, 0}});
  }
  if (!h.profile_banner) {
    add({.kind = problem_kind::no_profile_step});
  } else if (h.profile.empty()) {
    const std::int64_t failed = failure_of(request::profile_events);
    add({.kind = failed ? problem_kind::profile_failed : problem_kind::no_profile_records,
         .line = static_cast<std::uint64_t>(failed),
         .numbers = {failed, 0}});
  }
  if (!model.pair && !h.profile.empty()) add({.kind = problem_kind::no_calendar_time});
  if (model.pair_given || model.clock.one_pair()) return;
  const recovered_clock& clock = model.clock;
  for (std::size_t i = 0; i < clock.segments.size(); ++i) {
    if (i == clock.main) continue;
    const clock_segment& segment = clock.segments[i];
    problem found{.kind = problem_kind::other_clock_pair,
                  .line = segment.first_line,
                  .last_line = segment.last_line};
    found.subject = found.where();
    add(std::move(found));
  }
  if (!clock.unreadable.empty())
    add({.kind = problem_kind::calendar_not_local,
         .line = clock.unreadable.front(),
         .numbers = {static_cast<std::int64_t>(clock.unreadable.size()),
                     static_cast<std::int64_t>(clock.unreadable.front())}});
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
  press_chain& press = *facts.press;
  for (press_point& p : press.points) {
    p.on_axis = near(p.time);
    if (!p.on_axis) continue;
    extend(p.time);
    if (!press.origin || p.time < *press.origin) press.origin = p.time;
  }
  if (press.stats.finger_on != 0) press.origin = press.stats.finger_on;
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

// The capture's damage within a harvest's lines; what no line places goes
// with the last harvest, what comes before the first with the first.
void place_damage(capture_model& model) {
  if (model.harvests.empty()) return;
  for (std::size_t i = 0; i < model.damage.size(); ++i) {
    problem& d = model.damage[i];
    std::size_t h = model.harvests.size() - 1;
    if (d.line != 0) {
      const auto after = std::upper_bound(
          model.harvests.begin() + 1, model.harvests.end(), d.line,
          [](std::uint64_t line, const harvest_model& harvest) { return line < harvest.line; });
      h = static_cast<std::size_t>(after - model.harvests.begin()) - 1;
    }
    d.harvest = h;
    harvest_facts& facts = model.harvests[h].facts;
    facts.damage.push_back(i);
    facts.damaged = facts.damaged || loses_input(d);
  }
}

void gather(harvest_model& h, const capture_model& model) {
  harvest_facts& facts = h.facts;
  facts = {};
  const bool known = sources_known(h);
  if (known) facts.source_split = h.events_end;
  std::map<std::pair<std::uint64_t, std::uint32_t>, lane> lanes;
  std::map<std::uint32_t, category_count> categories;
  std::map<record_source, source_count> sources;
  facts.records.reserve(h.profile.size());
  const std::vector<recovered_clock::text_segment>& texts = model.clock.segment_of;
  std::vector<zol::timesync_pair> pairs;
  for (const clock_segment& segment : model.clock.segments) pairs.push_back(segment.pair());
  std::size_t text = static_cast<std::size_t>(
      std::lower_bound(texts.begin(), texts.end(), h.profile.empty() ? 0 : h.profile.front().line,
                       [](const recovered_clock::text_segment& t, std::uint64_t line) { return t.line < line; }) -
      texts.begin());
  for (std::size_t i = 0; i < h.profile.size(); ++i) {
    const profile_entry& entry = h.profile[i];
    const zol::profile_record record(entry.bytes.data());
    record_row row;
    row.entry = i;
    row.line = entry.line;
    row.type_word = record.type_word();
    row.sequence = record.sequence_number();
    row.timestamp = record.timestamp();
    row.source = !facts.source_split      ? record_source::unknown
                 : i < *facts.source_split ? record_source::profile_service
                                           : record_source::profiler_log;
    if (model.pair_given) {
      row.pair = model.pair;
    } else if (entry.has_calendar_text) {
      // Lines rise with the records, so one walk over the texts' segments.
      while (text < texts.size() && texts[text].line <= entry.line) ++text;
      if (text > 0) row.pair = pairs[texts[text - 1].segment];
    }
    facts.records.push_back(row);
    facts.span.add(row.timestamp);

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
  facts.sequence.runs = facts.runs.size();
  for (const sequence_run& run : facts.runs) {
    facts.sequence.records += run.records;
    facts.sequence.lost += run.lost;
    facts.sequence.repeated += run.repeats.size();
    facts.sequence.out_of_order += run.out_of_order;
  }

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
  for (std::size_t i = 0; i < model.harvests.size(); ++i) {
    harvest_facts& facts = model.harvests[i].facts;
    gather(model.harvests[i], model);
    for (problem& p : facts.missing) p.harvest = i;
    if (!facts.press) continue;
    for (problem& p : facts.press->notes) p.harvest = i;
    for (problem& p : facts.press->disagreements) p.harvest = i;
  }
  place_damage(model);
}

}  // namespace inspect