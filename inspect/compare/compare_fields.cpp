// The records the layouts name field by field (statistics, state dumps, the
// asset table) and the HID reports, compared between two harvests.

#include <algorithm>

#include "inspect/compare/comparison.h"

namespace inspect {
namespace {

enum class field_kind { value, latency, timestamp };

// The statistics record's times differ in every harvest; its latencies are
// held to the tolerance. Every other field must be equal.
field_kind statistics_kind(const layouts::named_field& field) {
  using layouts::field_role;
  switch (field.role) {
    case field_role::finger_on:
    case field_role::finger_off:
    case field_role::start_haptics:
    case field_role::button_edge:
    case field_role::asset_edge: return field_kind::timestamp;
    case field_role::finger_to_down_latency:
    case field_role::asset_latency:
    case field_role::second_scan_delta: return field_kind::latency;
    default: return field_kind::value;
  }
}

field_kind plain_kind(const layouts::named_field&) { return field_kind::value; }

verdict judge(const layouts::field_value& a, const layouts::field_value& b, field_kind kind,
              std::uint64_t tolerance_us) {
  if (a == b) return verdict::same;
  if (kind == field_kind::timestamp) return verdict::ignored;
  const auto* x = std::get_if<std::uint64_t>(&a);
  const auto* y = std::get_if<std::uint64_t>(&b);
  if (kind == field_kind::latency && x && y && (*x > *y ? *x - *y : *y - *x) <= tolerance_us)
    return verdict::within_tolerance;
  return verdict::differs;
}

using field_list = std::vector<layouts::named_field>;

struct block_rules {
  field_kind (*kind_of)(const layouts::named_field&) = plain_kind;
  std::uint64_t tolerance_us = 0;
  bool entries = false;  // the layout's index is a table entry, not an element
};

field_change change_of(const std::string& where, const layouts::named_field& field, bool entries) {
  field_change change;
  change.where = where;
  change.name = field.name;
  (entries ? change.entry : change.element) = field.index;
  return change;
}

// Two blocks of one layout, field by field; none for a block not printed.
void compare_blocks(field_comparison& out, const std::string& where, const field_list* a,
                    const field_list* b, const block_rules& rules) {
  if (!a && !b) return;
  if (!a || !b) {
    out.one_sided.push_back({where, a != nullptr, (a ? a : b)->size()});
    return;
  }
  const std::size_t count = std::max(a->size(), b->size());
  for (std::size_t i = 0; i < count; ++i) {
    const layouts::named_field* fa = i < a->size() ? &(*a)[i] : nullptr;
    const layouts::named_field* fb = i < b->size() ? &(*b)[i] : nullptr;
    const bool paired = fa && fb && fa->name == fb->name && fa->index == fb->index;
    if (paired) {
      const verdict v = judge(fa->value, fb->value, rules.kind_of(*fa), rules.tolerance_us);
      if (v == verdict::same) {
        ++out.unchanged;
        continue;
      }
      field_change& change = out.changes.emplace_back(change_of(where, *fa, rules.entries));
      change.a = fa->value;
      change.b = fb->value;
      change.result = v;
      continue;
    }
    if (fa) out.changes.emplace_back(change_of(where, *fa, rules.entries)).a = fa->value;
    if (fb) out.changes.emplace_back(change_of(where, *fb, rules.entries)).b = fb->value;
  }
}

std::optional<field_list> statistics_fields(const harvest_model& h) {
  if (!h.stats || !h.stats->printed) return std::nullopt;
  return layouts::stats_fields(h.stats->record);
}

std::optional<field_list> dump_fields(const harvest_model& h, request about) {
  for (const state_dump& dump : h.states) {
    if (dump.about != about || !dump.record) continue;
    return layouts::state_dump_fields(layouts::request_row(about).service, *dump.record);
  }
  return std::nullopt;
}

const assets_block* printed_assets(const harvest_model& h) {
  return h.assets && h.assets->length != 0 ? &*h.assets : nullptr;
}

// The asset table's entries apart, each under its own name: speed and state
// name the entry rather than being compared.
std::vector<std::pair<std::string, field_list>> asset_entries(const assets_block& block) {
  std::vector<std::pair<std::string, field_list>> entries;
  for (const layouts::named_field& field : layouts::assets_fields(block.table)) {
    const std::size_t entry = field.index.value_or(0);
    if (entries.size() <= entry) entries.resize(entry + 1);
    auto& [where, fields] = entries[entry];
    if (field.name == "speed" || field.name == "state") {
      const auto* word = std::get_if<std::string_view>(&field.value);
      where += where.empty() ? "ASSET [" : "][";
      if (word) where += *word;
      if (field.name == "state") where += "]";
      continue;
    }
    fields.push_back(field);
  }
  return entries;
}

const hid_report* report_of(const harvest_model& h, request about) {
  for (const hid_report& report : h.hid)
    if (report.about == about) return &report;
  return nullptr;
}

}  // namespace

field_comparison compare_statistics(const harvest_model& a, const harvest_model& b,
                                    std::uint64_t tolerance_us) {
  field_comparison out;
  const std::optional<field_list> fa = statistics_fields(a);
  const std::optional<field_list> fb = statistics_fields(b);
  compare_blocks(out, "statistics record", fa ? &*fa : nullptr, fb ? &*fb : nullptr,
                 {statistics_kind, tolerance_us, false});
  return out;
}

field_comparison compare_state_dumps(const harvest_model& a, const harvest_model& b) {
  field_comparison out;
  for (const layouts::harvest_request& row :
       layouts::step_requests(layouts::harvest_step::state_dumps)) {
    const std::optional<field_list> fa = dump_fields(a, row.id);
    const std::optional<field_list> fb = dump_fields(b, row.id);
    compare_blocks(out, std::string(row.report_key), fa ? &*fa : nullptr, fb ? &*fb : nullptr, {});
  }
  return out;
}

field_comparison compare_assets(const harvest_model& a, const harvest_model& b) {
  field_comparison out;
  const assets_block* ta = printed_assets(a);
  const assets_block* tb = printed_assets(b);
  if (!ta || !tb) {
    if (!ta && !tb) return out;
    std::size_t fields = 1;  // the length
    for (const auto& entry : asset_entries(ta ? *ta : *tb)) fields += entry.second.size();
    out.one_sided.push_back({"haptic asset table", ta != nullptr, fields});
    return out;
  }
  if (ta->length == tb->length) {
    ++out.unchanged;
  } else {
    field_change& change = out.changes.emplace_back();
    change.where = "haptic asset table";
    change.name = "length";
    change.a = ta->length;
    change.b = tb->length;
  }
  const auto ea = asset_entries(*ta);
  const auto eb = asset_entries(*tb);
  for (std::size_t i = 0; i < ea.size() && i < eb.size(); ++i)
    compare_blocks(out, ea[i].first, &ea[i].second, &eb[i].second, {plain_kind, 0, true});
  return out;
}

hid_comparison compare_hid_reports(const harvest_model& a, const harvest_model& b) {
  hid_comparison out;
  for (const layouts::harvest_request& row :
       layouts::step_requests(layouts::harvest_step::hid_reports)) {
    if (row.path != layouts::request_path::hid_report) continue;
    report_change change;
    change.id = static_cast<std::uint8_t>(row.command);
    change.a = report_of(a, row.id);
    change.b = report_of(b, row.id);
    if (!change.a && !change.b) continue;
    if (change.a && change.b) {
      const std::vector<std::uint8_t>& x = change.a->bytes;
      const std::vector<std::uint8_t>& y = change.b->bytes;
      for (std::size_t i = 0; i < x.size() && i < y.size(); ++i)
        if (x[i] != y[i]) change.offsets.push_back(i);
      const bool same = change.a->failed == change.b->failed && x == y;
      change.result = same ? verdict::same : verdict::differs;
    } else {
      change.result = verdict::differs;
    }
    out.reports.push_back(std::move(change));
  }
  return out;
}

}  // namespace inspect
