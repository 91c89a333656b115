#include "inspect/outputs/json_facts.h"

#include <type_traits>
#include <variant>

#include "inspect/capture/failure_meaning.h"

namespace inspect {

void write_failure(json_writer& json, const failure_line& f) {
  json.begin_object();
  write_failure_members(json, f);
  json.end_object();
}

void write_failure_members(json_writer& json, const failure_line& f) {
  const layouts::harvest_request& row = layouts::request_row(f.about);
  json.key("line").value(f.line);
  json.key("request").value(row.report_key);
  json.key("label").value(row.label);
  json.key("module").value(f.module);
  json.key("check").value(f.check);
  json.key("source").value(f.source);
  json.key("source_line").value(f.source_line);
  json.key("kind").value(kind_key(f.kind));
  json.key("value");
  if (f.value != 0)
    json.value(std::uint64_t{f.value});
  else
    json.null();
  json.key("error_text");
  if (f.value != 0)
    json.value(f.error_text);
  else
    json.null();
  json.key("meaning").value(f.meaning);
  json.key("text").value(f.text);
}

void write_failures(json_writer& json, const std::vector<failure_line>& failures) {
  json.begin_array();
  for (const failure_line& f : failures) write_failure(json, f);
  json.end_array();
}

void write_problem(json_writer& json, const problem& d) {
  const problem_row& row = row_of(d.kind);
  json.begin_object();
  json.key("kind").value(row.code);
  json.key("severity").value(severity_code(row.level));
  json.key("where").value(d.where());
  json.key("line");
  if (d.line != 0)
    json.value(d.line);
  else
    json.null();
  json.key("last_line").value(d.last_line > d.line ? d.last_line : d.line);
  json.key("byte");
  if (d.byte)
    json.value(*d.byte);
  else
    json.null();
  json.key("harvest");
  if (d.harvest)
    json.value(std::uint64_t{*d.harvest + 1});
  else
    json.null();
  json.key("subject");
  if (d.subject.empty())
    json.null();
  else
    json.value(d.subject);
  json.key("numbers").begin_array();
  for (unsigned i = 0; i < row.numbers; ++i) json.value(d.numbers[i]);
  json.end_array();
  json.key("text").value(problem_text(d));
  json.key("outcome");
  if (row.outcome.empty())
    json.null();
  else
    json.value(row.outcome);
  json.end_object();
}

void write_problems(json_writer& json, std::span<const problem> found) {
  json.begin_array();
  for (const problem& d : found) write_problem(json, d);
  json.end_array();
}

void write_harvest_damage(json_writer& json, const capture_model& model, const harvest_facts& facts) {
  json.begin_array();
  for (const std::size_t i : facts.damage) write_problem(json, model.damage[i]);
  json.end_array();
}

void write_span(json_writer& json, const time_span& span) {
  json.key("records").value(std::uint64_t{span.count});
  json.key("first_us").value(span.first);
  json.key("last_us").value(span.last);
  json.key("span_us").value(span.last - span.first);
}

void write_clock(json_writer& json, const capture_model& model) {
  if (!model.pair) {
    json.null();
    return;
  }
  json.begin_object();
  json.key("tmx_ns").value(std::int64_t{model.pair->tmx});
  json.key("calendar_ns").value(std::int64_t{model.pair->calendar});
  json.key("given").value(model.pair_given);
  json.key("one_pair").value(model.pair_given || model.clock.one_pair());
  json.key("segments").begin_array();
  if (!model.pair_given) {
    for (std::size_t i = 0; i < model.clock.segments.size(); ++i) {
      const clock_segment& s = model.clock.segments[i];
      json.begin_object();
      json.key("first_line").value(s.first_line);
      json.key("last_line").value(s.last_line);
      json.key("texts").value(std::uint64_t{s.texts});
      json.key("main").value(i == model.clock.main);
      json.end_object();
    }
  }
  json.end_array();
  json.key("unreadable_lines").begin_array();
  if (!model.pair_given)
    for (const std::uint64_t line : model.clock.unreadable) json.value(line);
  json.end_array();
  json.end_object();
}

void write_categories(json_writer& json, const harvest_facts& facts) {
  json.begin_array();
  for (const category_count& c : facts.categories) {
    json.begin_object();
    json.key("category_id").value(c.category);
    json.key("category").value(c.name);
    write_span(json, c.span);
    json.end_object();
  }
  json.end_array();
}

void write_sources(json_writer& json, const harvest_facts& facts) {
  if (facts.sources.empty()) {
    json.null();
    return;
  }
  json.begin_array();
  for (const source_count& s : facts.sources) {
    json.begin_object();
    json.key("source").value(source_name(s.source));
    write_span(json, s.span);
    json.end_object();
  }
  json.end_array();
}

void write_source(json_writer& json, record_source source) {
  if (source == record_source::unknown)
    json.null();
  else
    json.value(source_name(source));
}

void write_field_value(json_writer& json, const std::optional<layouts::field_value>& value) {
  if (!value) {
    json.null();
    return;
  }
  std::visit(
      [&](const auto& v) {
        using type = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<type, double>)
          json.number(v);
        else
          json.value(v);
      },
      *value);
}

}  // namespace inspect
