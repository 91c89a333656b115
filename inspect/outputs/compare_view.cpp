// The comparison described once, part by part: each value with its JSON
// for tools and its words for people. The printers lay it out.

#include <cstdio>
#include <initializer_list>
#include <tuple>
#include <variant>

#include "inspect/capture/number_text.h"
#include "inspect/outputs/compare_printer.h"
#include "inspect/outputs/text_format.h"

namespace inspect {
namespace {

using json = nlohmann::ordered_json;

// Words joined piece by piece.
std::string joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

compare_cell count_cell(std::uint64_t n) { return {n, std::to_string(n)}; }

compare_cell text_cell(std::string_view text) { return {std::string(text), std::string(text)}; }

compare_cell optional_count(std::optional<std::uint64_t> n) {
  return n ? count_cell(*n) : compare_cell{nullptr, "-"};
}

compare_cell micros_cell(std::optional<std::uint64_t> us) {
  return {us ? json(*us) : json(nullptr), micros_text(us)};
}

compare_cell span_cell(std::uint64_t us) {
  return {us, milliseconds_text(static_cast<std::int64_t>(us)) + " ms"};
}

compare_cell number_cell(std::optional<double> value, std::string text) {
  return {value ? json(*value) : json(nullptr), std::move(text)};
}

// People see a verdict where it is not "same".
compare_cell verdict_cell(verdict v) {
  return {verdict_key(v), v == verdict::same ? "" : std::string(verdict_label(v))};
}

compare_cell field_cell(const std::optional<layouts::field_value>& value) {
  if (!value) return {nullptr, "-"};
  return {std::visit([](const auto& v) { return json(v); }, *value), field_text(*value)};
}

std::string rate_text(std::optional<double> per_second) {
  if (!per_second) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.1f/s", *per_second);
  return text;
}

std::string_view step_key(step_kind kind) {
  switch (kind) {
    case step_kind::finger_to_down: return "finger_to_down";
    case step_kind::held: return "held";
    case step_kind::down_to_asset: return "down_to_asset";
    case step_kind::up_to_asset: return "up_to_asset";
  }
  return {};
}

// "21 bytes", "failed", "not asked".
compare_cell report_cell(const hid_report* report) {
  if (!report) return {nullptr, "not asked"};
  json facts = {{"line", report->line},
                {"failed", report->failed},
                {"length", std::uint64_t{report->bytes.size()}}};
  return {std::move(facts), report->failed ? "failed" : std::to_string(report->bytes.size()) + " bytes"};
}

constexpr compare_column latency_columns[] = {
    {"click", compare_slot::tools},   {"step", compare_slot::tools},
    {"label", compare_slot::name},    {"a_us", compare_slot::a},
    {"b_us", compare_slot::b},        {"difference_us", compare_slot::note, 12},
    {"percent", compare_slot::note},  {"verdict", compare_slot::note},
};

void press(const press_comparison& p, compare_printer& out) {
  const bool none = !p.clicks_a && !p.clicks_b;
  if (none)
    out.note("neither capture has a statistics record");
  else
    out.header("difference");
  out.pair(none ? "" : "clicks", "click_count_a", optional_count(p.clicks_a), "click_count_b",
           optional_count(p.clicks_b), p.clicks == verdict::same ? "" : "differs");
  compare_rows rows;
  for (const latency_change& l : p.latencies) {
    const compare_cell difference = {l.difference ? json(*l.difference) : json(nullptr),
                                     l.difference ? signed_micro_text(*l.difference) : ""};
    rows.push_back({count_cell(l.click + 1), text_cell(step_key(l.step)), text_cell(l.label),
                    micros_cell(l.a), micros_cell(l.b), difference,
                    number_cell(l.percent, l.difference ? percent_text(l.percent) : ""),
                    verdict_cell(l.result)});
  }
  out.table("latencies", latency_columns, rows, false);
}

constexpr compare_column one_sided_columns[] = {
    {"where", compare_slot::tools},
    {"in", compare_slot::tools},
    {"fields", compare_slot::tools},
    {"", compare_slot::name},
};

constexpr compare_column change_columns[] = {
    {"where", compare_slot::group}, {"name", compare_slot::tools}, {"element", compare_slot::tools},
    {"entry", compare_slot::tools}, {"", compare_slot::name},      {"a", compare_slot::a},
    {"b", compare_slot::b},         {"verdict", compare_slot::note},
};

void fields(const field_comparison& f, compare_printer& out) {
  out.value("unchanged", count_cell(f.unchanged));
  const bool empty = f.one_sided.empty() && f.changes.empty();
  if (empty)
    out.note(f.unchanged == 0 ? std::string("in neither capture")
                              : joined({"no difference in ", std::to_string(f.unchanged), " fields"}));
  compare_rows one_sided;
  for (const one_sided_block& block : f.one_sided)
    one_sided.push_back({text_cell(block.where), text_cell(block.in_a ? "a" : "b"),
                         count_cell(block.fields),
                         {nullptr, joined({block.where, ": only in ", block.in_a ? "A" : "B", " (",
                                          std::to_string(block.fields), " fields)"})}});
  out.table("one_sided", one_sided_columns, one_sided, true);
  if (!f.changes.empty()) out.header("");
  compare_rows changes;
  for (const field_change& change : f.changes) {
    const auto optional_index = [](std::optional<std::size_t> i) {
      return i ? count_cell(*i) : compare_cell{nullptr, ""};
    };
    changes.push_back({text_cell(change.where), text_cell(change.name),
                       optional_index(change.element), optional_index(change.entry),
                       {nullptr, field_name_text(change)}, field_cell(change.a), field_cell(change.b),
                       {verdict_key(change.result), std::string(verdict_label(change.result))}});
  }
  out.table("changes", change_columns, changes, false);
  if (!empty && f.unchanged != 0) out.note(joined({std::to_string(f.unchanged), " fields the same"}));
}

constexpr compare_column component_columns[] = {
    {"category", compare_slot::tools},  {"component", compare_slot::tools},
    {"", compare_slot::name},           {"records_a", compare_slot::a, 7},
    {"records_b", compare_slot::b, 7},  {"per_second_a", compare_slot::a},
    {"per_second_b", compare_slot::b},  {"verdict", compare_slot::note},
};

void records(const records_comparison& r, compare_printer& out) {
  out.header("");
  out.pair("records", "records_a", count_cell(r.a), "records_b", count_cell(r.b), "");
  out.pair("span", "span_a_us", span_cell(r.a_span_us), "span_b_us", span_cell(r.b_span_us), "");
  compare_rows rows;
  for (const component_rate& c : r.components)
    rows.push_back({text_cell(c.category), text_cell(c.component),
                    {nullptr, joined({c.category, " · ", c.component})}, count_cell(c.a), count_cell(c.b),
                    number_cell(c.a_per_second, rate_text(c.a_per_second)),
                    number_cell(c.b_per_second, rate_text(c.b_per_second)), verdict_cell(c.result)});
  out.table("components", component_columns, rows, false);
}

constexpr compare_column event_columns[] = {
    {"category", compare_slot::tools},
    {"component", compare_slot::tools},
    {"event", compare_slot::tools},
    {"", compare_slot::name},
};

void events(const events_comparison& e, compare_printer& out) {
  out.value("shared", count_cell(e.shared));
  out.note(joined({std::to_string(e.shared), " event names in both"}));
  for (const auto& [key, side, list] : {std::tuple{"only_a", "A", &e.only_a}, {"only_b", "B", &e.only_b}}) {
    compare_rows rows;
    for (const event_name& name : *list)
      rows.push_back({text_cell(name.category), text_cell(name.component), text_cell(name.event),
                      {nullptr, joined({"only in ", side, ": ", name.category, " · ", name.component, " · ",
                                       name.event})}});
    out.table(key, event_columns, rows, true);
  }
}

void sequences(const sequence_comparison& s, compare_printer& out) {
  out.header("");
  const compare_side_row rows[] = {
      {"runs", "runs of numbers", s.a.runs, s.b.runs},
      {"records", "", s.a.records, s.b.records},
      {"lost", "numbers lost", s.a.lost, s.b.lost},
      {"repeated", "numbers repeated", s.a.repeated, s.b.repeated},
      {"out_of_order", "out of order", s.a.out_of_order, s.b.out_of_order},
  };
  out.sides(rows);
}

constexpr compare_column report_columns[] = {
    {"id", compare_slot::tools},      {"", compare_slot::name},
    {"a", compare_slot::a},           {"b", compare_slot::b},
    {"differing_offsets", compare_slot::tools}, {"verdict", compare_slot::tools},
    {"", compare_slot::note},
};

void reports(const hid_comparison& h, compare_printer& out) {
  if (h.reports.empty())
    out.note("in neither capture");
  else
    out.header("");
  compare_rows rows;
  for (const report_change& r : h.reports) {
    std::string note = r.result == verdict::same ? "" : "differs";
    json offsets = json::array();
    for (std::size_t i = 0; i < r.offsets.size(); ++i) {
      note += i != 0 ? "," : r.offsets.size() == 1 ? " at byte " : " at bytes ";
      note += std::to_string(r.offsets[i]);
      offsets.push_back(std::uint64_t{r.offsets[i]});
    }
    rows.push_back({count_cell(r.id), {nullptr, joined({"report ", hex_text(r.id)})}, report_cell(r.a),
                    report_cell(r.b), {std::move(offsets), ""}, text_cell(verdict_key(r.result)),
                    {nullptr, std::move(note)}});
  }
  out.table("reports", report_columns, rows, false);
}

}  // namespace

void write_comparison(const comparison& c, compare_printer& out) {
  out.heading(c);
  for (const compare_part_row& row : compare_parts) {
    out.begin_part(row, c.status_of(row.part));
    switch (row.part) {
      case compare_part::press: press(c.press, out); break;
      case compare_part::statistics: fields(c.statistics, out); break;
      case compare_part::state_dumps: fields(c.state_dumps, out); break;
      case compare_part::records: records(c.records, out); break;
      case compare_part::events: events(c.events, out); break;
      case compare_part::sequence_numbers: sequences(c.sequence, out); break;
      case compare_part::assets: fields(c.assets, out); break;
      case compare_part::hid_reports: reports(c.hid, out); break;
      case compare_part::failures: out.failures(c.failures); break;
    }
    out.end_part();
  }
  out.finish(c);
}

std::string slot_text(std::span<const compare_column> columns, const std::vector<compare_cell>& row,
                      compare_slot slot) {
  std::string text;
  bool padded_before = false;
  for (std::size_t i = 0; i < columns.size() && i < row.size(); ++i) {
    if (columns[i].slot != slot || row[i].text.empty()) continue;
    if (!text.empty() && !padded_before) text += "  ";
    text += columns[i].width != 0 ? padded(row[i].text, columns[i].width) : row[i].text;
    padded_before = columns[i].width != 0;
  }
  return text;
}

std::string field_text(const layouts::field_value& value) {
  return std::visit(
      [](const auto& v) -> std::string {
        using type = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<type, std::string_view>) {
          return std::string(v);
        } else if constexpr (std::is_same_v<type, double>) {
          char text[32];
          std::snprintf(text, sizeof text, "%g", v);
          return text;
        } else {
          return std::to_string(v);
        }
      },
      value);
}

std::string field_name_text(const field_change& change) {
  std::string name(change.name);
  if (change.element) {
    name += '[';
    name += std::to_string(*change.element);
    name += ']';
  }
  return name;
}

std::string micros_text(std::optional<std::uint64_t> value) {
  return value ? std::to_string(*value) + " µs" : "-";
}

std::string percent_text(std::optional<double> percent) {
  if (!percent) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%+.2f%%", *percent);
  return text;
}

std::string_view verdict_label(verdict v) noexcept {
  switch (v) {
    case verdict::same: return "same";
    case verdict::within_tolerance: return "within tolerance";
    case verdict::ignored: return "ignored (a timestamp)";
    case verdict::differs: return "differs";
  }
  return {};
}

}  // namespace inspect
