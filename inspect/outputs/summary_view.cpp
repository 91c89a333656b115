#include "inspect/outputs/summary_view.h"

#include <array>

#include "inspect/capture/number_text.h"

namespace inspect {
namespace {

using value = summary_value;

std::int64_t since(std::uint64_t time, std::uint64_t origin) {
  return static_cast<std::int64_t>(time - origin);
}

constexpr std::array<step_kind, 4> click_steps = {step_kind::finger_to_down, step_kind::down_to_asset,
                                                  step_kind::held, step_kind::up_to_asset};
constexpr summary_column click_columns[] = {
    {"click", "", 16},
    {"finger_to_down_us", "finger on → down", 18},
    {"down_to_asset_us", "down → asset", 18},
    {"held_us", "held", 18},
    {"up_to_asset_us", "up → asset", 18},
};

void press(summary_printer& out, const capture_model& model, const harvest_facts& facts) {
  if (!facts.press) {
    out.absent("press", "press (statistics record)", "none: the capture has no statistics record");
    return;
  }
  const press_chain& chain = *facts.press;
  const press_stats& s = chain.stats;
  out.begin("press", "press (statistics record)");
  const std::optional<std::string> calendar = calendar_of(model, s.finger_on);
  out.fact("finger_on_calendar_time", "finger on", calendar ? value::text(*calendar) : value::none());
  out.fact("finger_on_us", "finger on, coprocessor", value::micros(s.finger_on));
  out.fact("click_count", "clicks", value::count(s.click_count));
  std::vector<std::vector<value>> rows;
  for (unsigned k = 0; k < chain.clicks; ++k) {
    std::vector<value> row{value::count(k + 1)};
    for (const step_kind kind : click_steps) {
      const press_step* step = facts.find_step(kind, k);
      row.push_back(step ? value::micros(chain.duration(*step)) : value::none());
    }
    rows.push_back(std::move(row));
  }
  out.table("clicks", click_columns, rows);
  out.fact("finger_off_after_us", "finger off, after finger on",
           chain.touch ? value::millis(since(chain.touch->off, chain.touch->on)) : value::none());
  out.fact("gorvin_scans", "Gorvin scans", value::count(s.gorvin_scans));
  out.fact("lumet_scans", "Lumet scans", value::count(s.lumet_scans));
  out.fact("second_scan_after_us", "second scan, after finger on",
           value::millis(since(s.second_scan, s.finger_on)));
  out.end();
}

constexpr summary_column point_columns[] = {
    {"point", "", 20}, {"checkpoint", "checkpoint", 24}, {"offset_us", "offset", 12}, {"line", "line", 8}};
constexpr summary_column step_columns[] = {{"step", "", 32},
                                           {"latency_us", "record", 16},
                                           {"checkpoint_latency_us", "checkpoints", 16}};

void checks(summary_printer& out, const harvest_facts& facts) {
  if (!facts.press) {
    out.absent("checks", "checked against the checkpoint records", "nothing to check: no press");
    return;
  }
  const press_chain& chain = *facts.press;
  out.begin("checks", "checked against the checkpoint records (agreeing within " +
                          std::to_string(checkpoint_tolerance_us) + " µs)");
  out.fact("tolerance_us", "tolerance", value::micros(checkpoint_tolerance_us));
  std::vector<std::vector<value>> points;
  for (const press_point& p : chain.points) {
    if (!p.checkpoint) continue;
    points.push_back({value::text(point_label(p)), value::text(checkpoint_label(*p.checkpoint)),
                      p.match ? value::offset(p.match->offset) : value::none(),
                      p.match ? value::count(facts.records[p.match->record].line) : value::none()});
  }
  out.table("points", point_columns, points);
  std::vector<std::vector<value>> steps;
  for (const press_step& s : chain.steps) {
    steps.push_back({value::text(step_label(s)), value::micros(chain.duration(s)),
                     s.checkpoint_latency ? value::offset(*s.checkpoint_latency) : value::none()});
  }
  out.table("steps", step_columns, steps);
  out.problems("notes", "note: ", chain.notes);
  out.fact("agree", "agreeing", chain.checked ? value::flag(chain.disagreements.empty()) : value::none());
  out.problems("disagreements", "DISAGREES: ", chain.disagreements);
  out.end();
}

constexpr summary_column span_columns[] = {{"name", "", 16},
                                           {"records", "records", 10},
                                           {"first_after_us", "first", 14},
                                           {"last_after_us", "last", 14},
                                           {"span_us", "span", 14}};

std::vector<value> span_row(std::string name, const time_span& span, std::uint64_t first) {
  return {value::text(std::move(name)), value::count(span.count), value::span(span.first - first),
          value::span(span.last - first), value::span(span.last - span.first)};
}

void records(summary_printer& out, const capture_model& model, const harvest_facts& facts) {
  out.begin("records", "records");
  out.fact("records", "records", value::count(facts.records.size()));
  const time_span& all = facts.span;
  const bool any = all.count != 0;
  out.fact("first_us", "first, coprocessor", any ? value::micros(all.first) : value::none());
  const std::optional<std::string> calendar = any ? calendar_of(model, all.first) : std::nullopt;
  out.fact("first_calendar_time", "first", calendar ? value::text(*calendar) : value::none());
  out.fact("span_us", "span", any ? value::span(all.last - all.first) : value::none());
  out.fact("off_axis", "far from the press", value::count(facts.off_axis));
  std::vector<std::vector<value>> rows;
  for (const category_count& c : facts.categories) rows.push_back(span_row(c.name, c.span, all.first));
  out.table("categories", span_columns, rows);
  rows.clear();
  for (const source_count& s : facts.sources)
    rows.push_back(span_row(std::string(source_name(s.source)), s.span, all.first));
  if (!facts.sources.empty())
    out.table("sources", span_columns, rows);
  else
    out.absent("sources", "", "the capture does not say which source each record came from");
  out.end();
}

}  // namespace

void write_summary(const capture_model& model, std::size_t harvest, summary_printer& out) {
  const harvest_model& h = model.harvests[harvest];
  const harvest_facts& facts = h.facts;
  out.heading(model, harvest);
  press(out, model, facts);
  checks(out, facts);
  records(out, model, facts);
  out.runs(facts.runs, !facts.sources.empty());
  out.failures(h.failures);
  std::vector<problem> damage;
  for (const std::size_t i : facts.damage) damage.push_back(model.damage[i]);
  out.problems("damage", "", damage);
  out.problems("missing", "", facts.missing);
  out.finish();
}

}  // namespace inspect
