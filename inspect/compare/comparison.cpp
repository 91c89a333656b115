#include "inspect/compare/comparison.h"

#include <algorithm>
#include <limits>
#include <map>
#include <tuple>

namespace inspect {
namespace {

// The order the summary lays a click's latencies out in.
constexpr step_kind click_steps[] = {step_kind::finger_to_down, step_kind::down_to_asset,
                                     step_kind::held, step_kind::up_to_asset};

// b - a, held at the ends of the range: a wild record's times are still
// compared without overflow.
std::int64_t signed_difference(std::uint64_t a, std::uint64_t b) {
  constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (b >= a) return static_cast<std::int64_t>(std::min(b - a, most));
  return -static_cast<std::int64_t>(std::min(a - b, most));
}

verdict worst(verdict x, verdict y) { return std::max(x, y); }

template <class List, class Verdict>
verdict worst_in(const List& list, Verdict of) {
  verdict v = verdict::same;
  for (const auto& item : list) v = worst(v, of(item));
  return v;
}

verdict fields_verdict(const field_comparison& f) {
  if (!f.one_sided.empty()) return verdict::differs;
  return worst_in(f.changes, [](const field_change& c) { return c.result; });
}

verdict part_verdict(const comparison& c, compare_part part) {
  switch (part) {
    case compare_part::press:
      return worst(c.press.clicks,
                   worst_in(c.press.latencies, [](const latency_change& l) { return l.result; }));
    case compare_part::statistics: return fields_verdict(c.statistics);
    case compare_part::state_dumps: return fields_verdict(c.state_dumps);
    case compare_part::records:
      return worst_in(c.records.components, [](const component_rate& r) { return r.result; });
    case compare_part::events:
      return c.events.only_a.empty() && c.events.only_b.empty() ? verdict::same : verdict::differs;
    case compare_part::sequence_numbers: return c.sequence.result;
    case compare_part::assets: return fields_verdict(c.assets);
    case compare_part::hid_reports:
      return worst_in(c.hid.reports, [](const report_change& r) { return r.result; });
    case compare_part::failures:
      return c.failures.only_a.empty() && c.failures.only_b.empty() ? verdict::same
                                                                    : verdict::differs;
  }
  return verdict::same;
}

part_status status_of(verdict v, bool ignored) {
  if (v == verdict::same) return part_status::no_difference;
  if (v != verdict::differs) return part_status::agrees;
  return ignored ? part_status::ignored : part_status::differs;
}

}  // namespace

std::optional<compare_part> part_of_key(std::string_view key) noexcept {
  for (const compare_part_row& row : compare_parts)
    if (row.key == key) return row.part;
  return std::nullopt;
}

std::string_view verdict_key(verdict v) noexcept {
  switch (v) {
    case verdict::same: return "same";
    case verdict::within_tolerance: return "within_tolerance";
    case verdict::ignored: return "ignored";
    case verdict::differs: return "differs";
  }
  return {};
}

std::string_view status_key(part_status s) noexcept {
  switch (s) {
    case part_status::no_difference: return "no_difference";
    case part_status::agrees: return "agrees";
    case part_status::differs: return "differs";
    case part_status::ignored: return "ignored";
  }
  return {};
}

std::string_view status_label(part_status s) noexcept {
  switch (s) {
    case part_status::no_difference: return "no difference";
    case part_status::agrees: return "agrees";
    case part_status::differs: return "differs";
    case part_status::ignored: return "differs, ignored";
  }
  return {};
}

bool comparison::agree() const {
  return std::none_of(status.begin(), status.end(),
                      [](part_status s) { return s == part_status::differs; });
}

press_comparison compare_press(const harvest_facts& a, const harvest_facts& b,
                               std::uint64_t tolerance_us) {
  press_comparison p;
  if (a.press) p.clicks_a = a.press->stats.click_count;
  if (b.press) p.clicks_b = b.press->stats.click_count;
  p.clicks = p.clicks_a == p.clicks_b ? verdict::same : verdict::differs;
  const unsigned clicks = std::max(a.press ? a.press->clicks : 0u, b.press ? b.press->clicks : 0u);
  for (unsigned k = 0; k < clicks; ++k) {
    for (const step_kind kind : click_steps) {
      const press_step* in_a = a.find_step(kind, k);
      const press_step* in_b = b.find_step(kind, k);
      if (!in_a && !in_b) continue;
      latency_change c;
      c.click = k;
      c.step = kind;
      c.label = step_label(in_a ? *in_a : *in_b);
      if (in_a) c.a = a.press->duration(*in_a);
      if (in_b) c.b = b.press->duration(*in_b);
      c.result = verdict::differs;
      if (c.a && c.b) {
        c.difference = signed_difference(*c.a, *c.b);
        if (*c.a != 0)
          c.percent = static_cast<double>(*c.difference) * 100.0 / static_cast<double>(*c.a);
        const std::uint64_t off = *c.a > *c.b ? *c.a - *c.b : *c.b - *c.a;
        c.result = off == 0              ? verdict::same
                   : off <= tolerance_us ? verdict::within_tolerance
                                         : verdict::differs;
      }
      p.latencies.push_back(std::move(c));
    }
  }
  return p;
}

failure_comparison compare_failures(const harvest_model& a, const harvest_model& b) {
  // Neither the line's place nor the number base it was written in: a
  // failure is the check that failed, where, and with what result.
  using key = std::tuple<std::string_view, std::string_view, std::int64_t, std::uint32_t>;
  const auto key_of = [](const failure_line& f) {
    return key{f.module, f.check, f.source_line, f.value};
  };
  std::map<key, std::vector<std::size_t>> waiting;  // B's lines, in order
  for (std::size_t i = 0; i < b.failures.size(); ++i) waiting[key_of(b.failures[i])].push_back(i);
  std::vector<bool> taken(b.failures.size(), false);
  failure_comparison result;
  for (const failure_line& f : a.failures) {
    const auto found = waiting.find(key_of(f));
    if (found == waiting.end() || found->second.empty()) {
      result.only_a.push_back(&f);
      continue;
    }
    const std::size_t match = found->second.front();
    found->second.erase(found->second.begin());
    taken[match] = true;
    result.both.emplace_back(&f, &b.failures[match]);
  }
  for (std::size_t i = 0; i < b.failures.size(); ++i)
    if (!taken[i]) result.only_b.push_back(&b.failures[i]);
  return result;
}

comparison compare_captures(const capture_model& a, std::size_t harvest_a, const capture_model& b,
                            std::size_t harvest_b, const compare_options& options) {
  comparison c;
  c.a = {&a, harvest_a};
  c.b = {&b, harvest_b};
  c.options = options;
  const harvest_model& ha = c.a.in();
  const harvest_model& hb = c.b.in();
  c.press = compare_press(ha.facts, hb.facts, options.tolerance_us);
  c.statistics = compare_statistics(ha, hb, options.tolerance_us);
  c.state_dumps = compare_state_dumps(ha, hb);
  c.records = compare_records(ha.facts, hb.facts);
  c.events = compare_events(ha, hb);
  c.sequence = compare_sequences(ha.facts, hb.facts);
  c.assets = compare_assets(ha, hb);
  c.hid = compare_hid_reports(ha, hb);
  c.failures = compare_failures(ha, hb);
  for (const compare_part_row& row : compare_parts) {
    const bool ignored =
        std::find(options.ignore.begin(), options.ignore.end(), row.part) != options.ignore.end();
    c.status[static_cast<std::size_t>(row.part)] = status_of(part_verdict(c, row.part), ignored);
  }
  return c;
}

}  // namespace inspect
