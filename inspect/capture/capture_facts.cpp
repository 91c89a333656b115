#include "inspect/capture/capture_facts.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "inspect/capture/capture_model.h"
#include "inspect/capture/number_text.h"
#include "liblog_zol/calendar_time.h"
#include "liblog_zol/json_printer.h"
#include "liblog_zol/name_tables.h"
#include "liblog_zol/profile_decoder.h"
#include "liblog_zol/profile_record.h"

namespace inspect {
namespace {

constexpr std::uint32_t controller_category = 7;  // pkey
constexpr std::uint32_t checkpoint_component = 3;  // pkey latency
constexpr std::uint32_t trace_point_type = 3;

// The checkpoint ids the statistics record has times for.
constexpr std::uint32_t ckp_finger_on = 0;
constexpr std::uint32_t ckp_finger_off = 1;
constexpr std::uint32_t ckp_button_down = 2;
constexpr std::uint32_t ckp_button_up = 3;
constexpr std::uint32_t ckp_start_haptics = 5;
constexpr std::uint32_t ckp_play_asset = 7;

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

// Sequence numbers in capture order, cut into runs. A run ends where the
// capture says the source changes, where the numbers restart below the
// run's lowest, or where they jump ahead while time goes back: another
// source's numbering.
class run_builder {
 public:
  run_builder(const harvest_model& harvest, const harvest_facts& facts) : harvest_(harvest), facts_(facts) {}

  std::vector<sequence_run> build() {
    for (std::size_t i = 0; i < facts_.records.size(); ++i) {
      const record_row& row = facts_.records[i];
      if (i == 0 || starts_run(row)) open(i);
      add(i);
    }
    if (!runs_.empty()) close();
    return std::move(runs_);
  }

 private:
  struct number {
    std::int64_t value;  // unwrapped across 2^32
    std::size_t record;
  };

  std::int64_t unwrap(std::uint32_t sequence) const {
    // The signed distance from the last number, modulo 2^32.
    const auto step = static_cast<std::int32_t>(sequence - static_cast<std::uint32_t>(last_));
    return last_ + step;
  }

  bool starts_run(const record_row& row) const {
    const record_row& previous = facts_.records[numbers_.back().record];
    if (row.source != previous.source) return true;
    const std::int64_t value = unwrap(row.sequence);
    if (value < lowest_) return true;
    return value > last_ + 1 && row.timestamp < previous.timestamp;
  }

  void open(std::size_t record) {
    if (!runs_.empty()) close();
    const record_row& row = facts_.records[record];
    runs_.emplace_back();
    runs_.back().source = row.source;
    runs_.back().first_record = record;
    runs_.back().first_line = row.line;
    numbers_.clear();
    last_ = row.sequence;
    lowest_ = last_;
  }

  void add(std::size_t record) {
    const record_row& row = facts_.records[record];
    const std::int64_t value = numbers_.empty() ? last_ : unwrap(row.sequence);
    if (!numbers_.empty() && value <= last_) backward_.push_back(record);
    numbers_.push_back({value, record});
    last_ = value;
    lowest_ = std::min(lowest_, value);
    ++runs_.back().records;
  }

  void close() {
    sequence_run& run = runs_.back();
    std::vector<number> sorted = numbers_;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const number& a, const number& b) { return a.value < b.value; });
    run.lowest = static_cast<std::uint32_t>(sorted.front().value);
    run.highest = static_cast<std::uint32_t>(sorted.back().value);
    for (std::size_t i = 1; i < sorted.size(); ++i) {
      const number& before = sorted[i - 1];
      const number& now = sorted[i];
      if (now.value == before.value) {
        const record_row& first = facts_.records[before.record];
        const record_row& second = facts_.records[now.record];
        const bool same = std::equal(record_bytes(harvest_, first), record_bytes(harvest_, first) + 48,
                                     record_bytes(harvest_, second));
        run.repeats.push_back({second.sequence, second.line, same});
      } else if (now.value > before.value + 1) {
        const auto missing = static_cast<std::uint64_t>(now.value - before.value - 1);
        run.gaps.push_back({static_cast<std::uint64_t>(before.value) & 0xffffffffu, missing});
        run.lost += missing;
      }
    }
    std::sort(run.repeats.begin(), run.repeats.end(),
              [](const sequence_repeat& a, const sequence_repeat& b) { return a.line < b.line; });
    // A step back that lands on a number not seen before fills a gap: the
    // record came late.
    for (const std::size_t record : backward_) {
      const std::uint64_t line = facts_.records[record].line;
      const auto at = std::lower_bound(
          run.repeats.begin(), run.repeats.end(), line,
          [](const sequence_repeat& r, std::uint64_t l) { return r.line < l; });
      if (at == run.repeats.end() || at->line != line) ++run.out_of_order;
    }
    backward_.clear();
  }

  const harvest_model& harvest_;
  const harvest_facts& facts_;
  std::vector<sequence_run> runs_;
  std::vector<number> numbers_;
  std::vector<std::size_t> backward_;
  std::int64_t last_ = 0;
  std::int64_t lowest_ = 0;
};

// The checkpoint records of each id, and which are taken.
class checkpoint_index {
 public:
  explicit checkpoint_index(const harvest_facts& facts) : facts_(facts) {
    for (std::size_t i = 0; i < facts.records.size(); ++i) {
      const record_row& row = facts.records[i];
      if (row.category() == controller_category && row.component() == checkpoint_component &&
          row.event() < by_id_.size())
        by_id_[row.event()].push_back(i);
    }
    empty_ = std::all_of(by_id_.begin(), by_id_.end(),
                         [](const auto& list) { return list.empty(); });
  }

  bool empty() const { return empty_; }

  // The nearest untaken checkpoint of `id` within the window; taken from now.
  std::optional<checkpoint_match> take(std::uint32_t id, std::uint64_t time) {
    std::optional<checkpoint_match> best;
    std::size_t best_slot = 0;
    auto& list = by_id_[id];
    for (std::size_t slot = 0; slot < list.size(); ++slot) {
      const record_row& row = facts_.records[list[slot]];
      const std::int64_t offset =
          static_cast<std::int64_t>(row.timestamp) - static_cast<std::int64_t>(time);
      const std::uint64_t distance = offset < 0 ? 0 - static_cast<std::uint64_t>(offset)
                                                : static_cast<std::uint64_t>(offset);
      if (distance > checkpoint_window_us) continue;
      if (!best || distance < magnitude(best->offset)) {
        best = checkpoint_match{list[slot], row.timestamp, offset};
        best_slot = slot;
      }
    }
    if (best) list.erase(list.begin() + static_cast<std::ptrdiff_t>(best_slot));
    return best;
  }

  // Untaken checkpoints of `id` between the two times.
  std::vector<std::size_t> left_between(std::uint32_t id, std::uint64_t from,
                                        std::uint64_t to) const {
    std::vector<std::size_t> left;
    for (const std::size_t record : by_id_[id]) {
      const std::uint64_t t = facts_.records[record].timestamp;
      if (t >= from && t <= to) left.push_back(record);
    }
    return left;
  }

  static std::uint64_t magnitude(std::int64_t value) {
    return value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
  }

 private:
  const harvest_facts& facts_;
  std::array<std::vector<std::size_t>, 8> by_id_;
  bool empty_ = true;
};

class chain_builder {
 public:
  chain_builder(const harvest_facts& facts, const press_stats& stats)
      : facts_(facts), checkpoints_(facts) {
    chain_.stats = stats;
  }

  press_chain build() {
    const press_stats& s = chain_.stats;
    const std::uint64_t count = s.click_count;
    chain_.clicks = static_cast<unsigned>(std::min<std::uint64_t>(count, clicks_in_record));
    if (count > clicks_in_record)
      chain_.notes.push_back("the click count is " + std::to_string(count) +
                             ", but the record holds times for " +
                             std::to_string(clicks_in_record) + " clicks");
    if (count == 0) chain_.notes.push_back("the statistics record counts no click");

    const auto finger_on = point(point_kind::finger_on, 0, s.finger_on, ckp_finger_on);
    point(point_kind::start_haptics, 0, s.start_haptics, ckp_start_haptics);
    for (unsigned k = 0; k < chain_.clicks; ++k) add_click(k, finger_on);
    point(point_kind::finger_off, 0, s.finger_off, ckp_finger_off);
    point(point_kind::second_scan, 0, s.second_scan, std::nullopt);

    check_points();
    check_steps();
    check_leftovers();
    return std::move(chain_);
  }

 private:
  std::string click_name(unsigned k) const { return "click " + std::to_string(k + 1); }

  // The index of a new point, or none when the record has no time for it.
  std::optional<std::size_t> point(point_kind kind, unsigned click, std::uint64_t time,
                                   std::optional<std::uint32_t> checkpoint) {
    if (time == 0) return std::nullopt;
    press_point p;
    p.kind = kind;
    p.click = click;
    p.time = time;
    p.checkpoint = checkpoint;
    if (checkpoint) p.match = checkpoints_.take(*checkpoint, time);
    chain_.points.push_back(std::move(p));
    return chain_.points.size() - 1;
  }

  void step(step_kind kind, unsigned click, std::optional<std::size_t> from,
            std::optional<std::size_t> to, std::optional<std::uint64_t> latency) {
    if (!from || !to) return;
    press_step s;
    s.kind = kind;
    s.click = click;
    s.from = *from;
    s.to = *to;
    s.latency_field = latency;
    chain_.steps.push_back(s);
  }

  void add_click(unsigned k, std::optional<std::size_t> finger_on) {
    const press_stats& s = chain_.stats;
    const std::string name = click_name(k);
    const auto down = point(point_kind::button_down, k, s.button[2 * k], ckp_button_down);
    const auto up = point(point_kind::button_up, k, s.button[2 * k + 1], ckp_button_up);
    const auto down_asset = point(point_kind::down_asset, k, s.asset[2 * k], ckp_play_asset);
    const auto up_asset = point(point_kind::up_asset, k, s.asset[2 * k + 1], ckp_play_asset);
    if (!down) chain_.notes.push_back(name + ": the record has no button-down time");
    if (!up) chain_.notes.push_back(name + ": the record has no button-up time");
    if (down && !down_asset)
      chain_.notes.push_back(name + ": the record has no time for the button-down asset");
    if (up && !up_asset)
      chain_.notes.push_back(name + ": the record has no time for the button-up asset");

    const std::optional<std::uint64_t> fd_latency =
        k == 0 ? std::optional<std::uint64_t>(s.latency_fd_to_down) : std::nullopt;
    step(step_kind::finger_to_down, k, finger_on, down, fd_latency);
    step(step_kind::held, k, down, up, std::nullopt);
    step(step_kind::down_to_asset, k, down, down_asset, s.asset_latency[2 * k]);
    step(step_kind::up_to_asset, k, up, up_asset, s.asset_latency[2 * k + 1]);
  }

  void check_points() {
    if (checkpoints_.empty()) {
      chain_.notes.push_back(facts_.records.empty()
                                 ? "no profile records: nothing to check the statistics against"
                                 : "no checkpoint records (pkey latency): the statistics are "
                                   "not checked");
      return;
    }
    for (const press_point& p : chain_.points) {
      if (!p.checkpoint) continue;
      chain_.checked = chain_.checked || p.match;
      const std::string name = checkpoint_label(*p.checkpoint);
      if (!p.match) {
        chain_.notes.push_back(point_label(p) + ": no " + name + " record within " +
                               std::to_string(checkpoint_window_us / 1000) + " ms");
      } else if (checkpoint_index::magnitude(p.match->offset) > checkpoint_tolerance_us) {
        chain_.disagreements.push_back(point_label(p) + ": " + name + " is " +
                                       signed_micro_text(p.match->offset) +
                                       " from the statistics record's time (more than " +
                                       std::to_string(checkpoint_tolerance_us) + " µs)");
      }
    }
  }

  void check_steps() {
    for (const press_step& s : chain_.steps) {
      const press_point& from = chain_.points[s.from];
      const press_point& to = chain_.points[s.to];
      if (to.time < from.time) {
        chain_.disagreements.push_back(step_label(s) + ": " + point_label(to) + " (" +
                                       std::to_string(to.time) + " µs) comes before " +
                                       point_label(from) + " (" + std::to_string(from.time) + " µs)");
        continue;
      }
      if (s.latency_field && *s.latency_field != to.time - from.time)
        chain_.disagreements.push_back(step_label(s) + ": the record's latency is " +
                                       std::to_string(*s.latency_field) +
                                       " µs, its timestamps are " +
                                       std::to_string(to.time - from.time) + " µs apart");
    }
    // Steps that run backwards cannot be drawn.
    std::erase_if(chain_.steps, [&](const press_step& s) {
      return chain_.points[s.to].time < chain_.points[s.from].time;
    });
  }

  // Button edges the controller logged during the press that the record
  // does not count.
  void check_leftovers() {
    const press_stats& s = chain_.stats;
    if (s.finger_on == 0 || s.finger_off <= s.finger_on) return;
    for (const std::uint32_t id : {ckp_button_down, ckp_button_up}) {
      for (const std::size_t record : checkpoints_.left_between(id, s.finger_on, s.finger_off))
        chain_.disagreements.push_back(checkpoint_label(id) + " at " +
                                       std::to_string(facts_.records[record].timestamp) +
                                       " µs (line " + std::to_string(facts_.records[record].line) +
                                       ") matches no click of the statistics record");
    }
  }

  const harvest_facts& facts_;
  checkpoint_index checkpoints_;
  press_chain chain_;
};

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
  facts.runs = run_builder(h, facts).build();

  if (h.stats && h.stats->printed)
    facts.press = chain_builder(facts, read_press_stats(h.stats->record)).build();
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
  if (!zol::iso_calendar_time(zol::calendar_microseconds(timestamp, *model.pair), text))
    return std::nullopt;
  return text;
}

std::string point_label(const press_point& point) {
  const std::string click = "click " + std::to_string(point.click + 1);
  switch (point.kind) {
    case point_kind::finger_on: return "finger on";
    case point_kind::start_haptics: return "start haptics";
    case point_kind::button_down: return click + " down";
    case point_kind::button_up: return click + " up";
    case point_kind::down_asset: return click + " down asset";
    case point_kind::up_asset: return click + " up asset";
    case point_kind::finger_off: return "finger off";
    case point_kind::second_scan: return "second scan";
  }
  return {};
}

std::string step_label(const press_step& step) {
  const std::string click = "click " + std::to_string(step.click + 1);
  switch (step.kind) {
    case step_kind::finger_to_down: return "finger on → " + click + " down";
    case step_kind::held: return click + " held";
    case step_kind::down_to_asset: return click + " down → asset";
    case step_kind::up_to_asset: return click + " up → asset";
  }
  return {};
}

bool click_point(point_kind kind) noexcept {
  return kind == point_kind::button_down || kind == point_kind::button_up || asset_point(kind);
}

bool asset_point(point_kind kind) noexcept {
  return kind == point_kind::down_asset || kind == point_kind::up_asset;
}

const press_step* harvest_facts::find_step(step_kind kind, unsigned click) const noexcept {
  if (!press) return nullptr;
  for (const press_step& s : press->steps)
    if (s.kind == kind && s.click == click) return &s;
  return nullptr;
}

void gather_facts(capture_model& model) {
  for (harvest_model& harvest : model.harvests) gather(harvest, model);
}

}  // namespace inspect
