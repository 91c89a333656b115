#include <algorithm>
#include <array>

#include "inspect/capture/fact_builders.h"
#include "inspect/capture/number_text.h"

namespace inspect {
namespace {

using zol::ckp_button_down;
using zol::ckp_button_up;
using zol::ckp_finger_off;
using zol::ckp_finger_on;
using zol::ckp_play_asset;
using zol::ckp_start_haptics;

std::int64_t signed_number(std::uint64_t value) { return static_cast<std::int64_t>(value); }

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
      note({.kind = problem_kind::clicks_beyond_record,
            .numbers = {signed_number(count), signed_number(clicks_in_record)}});
    if (count == 0) note({.kind = problem_kind::no_click});
    if (s.finger_on != 0 && s.finger_off > s.finger_on) chain_.touch = touch_interval{s.finger_on, s.finger_off};

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
  void note(problem found) { chain_.notes.push_back(std::move(found)); }
  void disagree(problem found) { chain_.disagreements.push_back(std::move(found)); }

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
    const auto down = point(point_kind::button_down, k, s.button[2 * k], ckp_button_down);
    const auto up = point(point_kind::button_up, k, s.button[2 * k + 1], ckp_button_up);
    const auto down_asset = point(point_kind::down_asset, k, s.asset[2 * k], ckp_play_asset);
    const auto up_asset = point(point_kind::up_asset, k, s.asset[2 * k + 1], ckp_play_asset);
    const std::array<std::int64_t, 2> click = {k + 1, 0};
    if (!down) note({.kind = problem_kind::no_button_down, .numbers = click});
    if (!up) note({.kind = problem_kind::no_button_up, .numbers = click});
    if (down && !down_asset) note({.kind = problem_kind::no_down_asset, .numbers = click});
    if (up && !up_asset) note({.kind = problem_kind::no_up_asset, .numbers = click});

    const std::optional<std::uint64_t> fd_latency =
        k == 0 ? std::optional<std::uint64_t>(s.latency_fd_to_down) : std::nullopt;
    step(step_kind::finger_to_down, k, finger_on, down, fd_latency);
    step(step_kind::held, k, down, up, std::nullopt);
    step(step_kind::down_to_asset, k, down, down_asset, s.asset_latency[2 * k]);
    step(step_kind::up_to_asset, k, up, up_asset, s.asset_latency[2 * k + 1]);
  }

  void check_points() {
    if (checkpoints_.empty()) {
      note({.kind = facts_.records.empty() ? problem_kind::nothing_to_check : problem_kind::no_checkpoints});
      return;
    }
    for (const press_point& p : chain_.points) {
      if (!p.checkpoint) continue;
      chain_.checked = chain_.checked || p.match;
      const std::string name = checkpoint_label(*p.checkpoint);
      if (!p.match) {
        note({.kind = problem_kind::checkpoint_not_found,
              .subject = point_label(p),
              .object = name,
              .numbers = {signed_number(checkpoint_window_us / 1000), 0}});
      } else if (checkpoint_index::magnitude(p.match->offset) > checkpoint_tolerance_us) {
        disagree({.kind = problem_kind::checkpoint_offset,
                  .line = facts_.records[p.match->record].line,
                  .subject = point_label(p),
                  .object = name,
                  .numbers = {p.match->offset, signed_number(checkpoint_tolerance_us)}});
      }
    }
  }

  void check_steps() {
    for (press_step& s : chain_.steps) {
      const press_point& from = chain_.points[s.from];
      const press_point& to = chain_.points[s.to];
      if (from.match && to.match)
        s.checkpoint_latency = signed_number(to.match->timestamp) - signed_number(from.match->timestamp);
      if (to.time < from.time) {
        disagree({.kind = problem_kind::step_backwards,
                  .subject = step_label(s),
                  .object = point_label(to),
                  .numbers = {signed_number(to.time), signed_number(from.time)}});
        continue;
      }
      if (s.latency_field && *s.latency_field != to.time - from.time)
        disagree({.kind = problem_kind::latency_field_differs,
                  .subject = step_label(s),
                  .numbers = {signed_number(*s.latency_field), signed_number(to.time - from.time)}});
    }
    // Steps that run backwards cannot be drawn.
    std::erase_if(chain_.steps, [&](const press_step& s) {
      return chain_.points[s.to].time < chain_.points[s.from].time;
    });
  }

  // Button edges the controller logged during the press that the record
  // does not count.
  void check_leftovers() {
    if (!chain_.touch) return;
    for (const std::uint32_t id : {ckp_button_down, ckp_button_up}) {
      for (const std::size_t record : checkpoints_.left_between(id, chain_.touch->on, chain_.touch->off)) {
        const record_row& row = facts_.records[record];
        disagree({.kind = problem_kind::unmatched_edge,
                  .line = row.line,
                  .subject = checkpoint_label(id),
                  .numbers = {signed_number(row.timestamp), signed_number(row.line)}});
      }
    }
  }

  const harvest_facts& facts_;
  checkpoint_index checkpoints_;
  press_chain chain_;
};

}  // namespace

press_chain build_press_chain(const harvest_facts& facts, const press_stats& stats) {
  return chain_builder(facts, stats).build();
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
}  // namespace inspect
