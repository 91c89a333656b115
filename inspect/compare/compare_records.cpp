// The profile records of two harvests: counts and rates per component, the
// event names only one has, and the sequence numbers each lost or repeated.

#include <map>
#include <set>
#include <tuple>

#include "inspect/compare/comparison.h"

namespace inspect {
namespace {

std::uint64_t span_of(const harvest_facts& facts) { return facts.span.last - facts.span.first; }

std::optional<double> per_second(std::size_t count, std::uint64_t span_us) {
  if (span_us == 0) return std::nullopt;
  return static_cast<double>(count) * 1e6 / static_cast<double>(span_us);
}

using event_key = std::tuple<std::string, std::string, std::string>;

std::set<event_key> events_of(const harvest_model& h) {
  std::map<std::uint32_t, std::pair<std::string, std::string>>
      names;  // by the type word's top half
  std::set<event_key> events;
  for (const record_row& row : h.facts.records) {
    auto [at, fresh] = names.try_emplace(row.type_word >> 16);
    if (fresh)
      at->second = {category_label(row.category()),
                    component_label(row.category(), row.component())};
    events.emplace(at->second.first, at->second.second, event_label(record_bytes(h, row)));
  }
  return events;
}


}  // namespace

records_comparison compare_records(const harvest_facts& a, const harvest_facts& b) {
  records_comparison r;
  r.a = a.records.size();
  r.b = b.records.size();
  r.a_span_us = span_of(a);
  r.b_span_us = span_of(b);
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::size_t> at;
  for (const lane& l : a.lanes) {
    at[{l.category, l.component}] = r.components.size();
    r.components.push_back({l.category_name, l.component_name, l.span.count, 0, {}, {}, {}});
  }
  for (const lane& l : b.lanes) {
    const auto [place, fresh] = at.try_emplace({l.category, l.component}, r.components.size());
    if (fresh) r.components.push_back({l.category_name, l.component_name, 0, 0, {}, {}, {}});
    r.components[place->second].b = l.span.count;
  }
  for (component_rate& c : r.components) {
    c.a_per_second = per_second(c.a, r.a_span_us);
    c.b_per_second = per_second(c.b, r.b_span_us);
    c.result = c.a == c.b ? verdict::same : verdict::differs;
  }
  return r;
}

events_comparison compare_events(const harvest_model& a, const harvest_model& b) {
  const std::set<event_key> ea = events_of(a);
  const std::set<event_key> eb = events_of(b);
  events_comparison e;
  const auto add = [](std::vector<event_name>& list, const event_key& key) {
    list.push_back({std::get<0>(key), std::get<1>(key), std::get<2>(key)});
  };
  for (const event_key& key : ea)
    if (eb.contains(key))
      ++e.shared;
    else
      add(e.only_a, key);
  for (const event_key& key : eb)
    if (!ea.contains(key)) add(e.only_b, key);
  return e;
}

sequence_comparison compare_sequences(const harvest_facts& a, const harvest_facts& b) {
  sequence_comparison s;
  s.a = a.sequence;
  s.b = b.sequence;
  const bool same =
      s.a.lost == s.b.lost && s.a.repeated == s.b.repeated && s.a.out_of_order == s.b.out_of_order;
  s.result = same ? verdict::same : verdict::differs;
  return s;
}

}  // namespace inspect
