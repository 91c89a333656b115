// The comparison as one JSON object for tools (inspect/schema/
// compare.schema.json): every part under its key with its status, the
// values of A and B side by side, null where one has none.


#include "inspect/outputs/compare_printer.h"
#include "inspect/outputs/json_facts.h"
#include "inspect/outputs/json_writer.h"

namespace inspect {
namespace {

void optional_value(json_writer& json, const std::optional<std::uint64_t>& value) {
  if (value)
    json.value(*value);
  else
    json.null();
}

void optional_number(json_writer& json, const std::optional<double>& value) {
  if (value)
    json.number(*value);
  else
    json.null();
}

void side(json_writer& json, const compare_side& s) {
  const capture_model& model = *s.model;
  json.begin_object();
  json.key("input").value(model.input);
  json.key("harvest").value(std::uint64_t{s.harvest + 1});
  json.key("harvests").value(std::uint64_t{model.harvests.size()});
  json.key("damaged").value(model.lost);
  json.key("damage");
  write_problems(json, model.damage);
  json.end_object();
}

class json_printer final : public compare_printer {
 public:
  explicit json_printer(std::string& out) : json_(out, true) {}

  void heading(const comparison& c) override {
    json_.begin_object();
    json_.key("schema_version").value(std::uint64_t{compare_schema_version});
    json_.key("a");
    side(json_, c.a);
    json_.key("b");
    side(json_, c.b);
    json_.key("tolerance_us").value(c.options.tolerance_us);
    json_.key("ignored_parts").begin_array();
    for (const compare_part part : c.options.ignore)
      json_.value(compare_parts[static_cast<std::size_t>(part)].key);
    json_.end_array();
    json_.key("parts").begin_object();
  }

  void press(const compare_part_row& part, part_status status, const comparison& c) override {
    begin(part, status);
    json_.key("click_count_a");
    optional_value(json_, c.press.clicks_a);
    json_.key("click_count_b");
    optional_value(json_, c.press.clicks_b);
    json_.key("latencies").begin_array();
    for (const latency_change& l : c.press.latencies) {
      json_.begin_object();
      json_.key("click").value(std::uint64_t{l.click + 1});
      json_.key("step").value(step_key(l.step));
      json_.key("label").value(l.label);
      json_.key("a_us");
      optional_value(json_, l.a);
      json_.key("b_us");
      optional_value(json_, l.b);
      json_.key("difference_us");
      if (l.difference)
        json_.value(*l.difference);
      else
        json_.null();
      json_.key("percent");
      optional_number(json_, l.percent);
      json_.key("verdict").value(verdict_key(l.result));
      json_.end_object();
    }
    json_.end_array();
    json_.end_object();
  }

  void fields(const compare_part_row& part, part_status status,
              const field_comparison& f) override {
    begin(part, status);
    json_.key("unchanged").value(std::uint64_t{f.unchanged});
    json_.key("one_sided").begin_array();
    for (const one_sided_block& block : f.one_sided) {
      json_.begin_object();
      json_.key("where").value(block.where);
      json_.key("in").value(block.in_a ? "a" : "b");
      json_.key("fields").value(std::uint64_t{block.fields});
      json_.end_object();
    }
    json_.end_array();
    json_.key("changes").begin_array();
    for (const field_change& change : f.changes) {
      json_.begin_object();
      json_.key("where").value(change.where);
      json_.key("name").value(change.name);
      json_.key("element");
      optional_value(json_, change.element);
      json_.key("entry");
      optional_value(json_, change.entry);
      json_.key("a");
      write_field_value(json_, change.a);
      json_.key("b");
      write_field_value(json_, change.b);
      json_.key("verdict").value(verdict_key(change.result));
      json_.end_object();
    }
    json_.end_array();
    json_.end_object();
  }

  void records(const compare_part_row& part, part_status status,
               const records_comparison& r) override {
    begin(part, status);
    json_.key("records_a").value(std::uint64_t{r.a});
    json_.key("records_b").value(std::uint64_t{r.b});
    json_.key("span_a_us").value(r.a_span_us);
    json_.key("span_b_us").value(r.b_span_us);
    json_.key("components").begin_array();
    for (const component_rate& c : r.components) {
      json_.begin_object();
      json_.key("category").value(c.category);
      json_.key("component").value(c.component);
      json_.key("records_a").value(std::uint64_t{c.a});
      json_.key("records_b").value(std::uint64_t{c.b});
      json_.key("per_second_a");
      optional_number(json_, c.a_per_second);
      json_.key("per_second_b");
      optional_number(json_, c.b_per_second);
      json_.key("verdict").value(verdict_key(c.result));
      json_.end_object();
    }
    json_.end_array();
    json_.end_object();
  }

  void events(const compare_part_row& part, part_status status,
              const events_comparison& e) override {
    begin(part, status);
    json_.key("shared").value(std::uint64_t{e.shared});
    for (const auto& [key, list] :
         {std::pair{"only_a", &e.only_a}, std::pair{"only_b", &e.only_b}}) {
      json_.key(key).begin_array();
      for (const event_name& name : *list) {
        json_.begin_object();
        json_.key("category").value(name.category);
        json_.key("component").value(name.component);
        json_.key("event").value(name.event);
        json_.end_object();
      }
      json_.end_array();
    }
    json_.end_object();
  }

  void sequences(const compare_part_row& part, part_status status,
                 const sequence_comparison& s) override {
    begin(part, status);
    for (const auto& [key, totals] : {std::pair{"a", &s.a}, std::pair{"b", &s.b}}) {
      json_.key(key).begin_object();
      json_.key("runs").value(std::uint64_t{totals->runs});
      json_.key("records").value(std::uint64_t{totals->records});
      json_.key("lost").value(totals->lost);
      json_.key("repeated").value(std::uint64_t{totals->repeated});
      json_.key("out_of_order").value(std::uint64_t{totals->out_of_order});
      json_.end_object();
    }
    json_.end_object();
  }

  void reports(const compare_part_row& part, part_status status, const hid_comparison& h) override {
    begin(part, status);
    json_.key("reports").begin_array();
    for (const report_change& r : h.reports) {
      json_.begin_object();
      json_.key("id").value(std::uint64_t{r.id});
      for (const auto& [key, report] : {std::pair{"a", r.a}, std::pair{"b", r.b}}) {
        json_.key(key);
        if (!report) {
          json_.null();
          continue;
        }
        json_.begin_object();
        json_.key("line").value(report->line);
        json_.key("failed").value(report->failed);
        json_.key("length").value(std::uint64_t{report->bytes.size()});
        json_.end_object();
      }
      json_.key("differing_offsets").begin_array();
      for (const std::size_t offset : r.offsets) json_.value(std::uint64_t{offset});
      json_.end_array();
      json_.key("verdict").value(verdict_key(r.result));
      json_.end_object();
    }
    json_.end_array();
    json_.end_object();
  }

  void failures(const compare_part_row& part, part_status status,
                const failure_comparison& f) override {
    begin(part, status);
    for (const auto& [key, list] :
         {std::pair{"only_a", &f.only_a}, std::pair{"only_b", &f.only_b}}) {
      json_.key(key).begin_array();
      for (const failure_line* line : *list) write_failure(json_, *line);
      json_.end_array();
    }
    json_.key("both").begin_array();
    for (const auto& [a, b] : f.both) {
      json_.begin_object();
      json_.key("a");
      write_failure(json_, *a);
      json_.key("b");
      write_failure(json_, *b);
      json_.end_object();
    }
    json_.end_array();
    json_.end_object();
  }

  void finish(const comparison& c) override {
    json_.end_object();
    json_.key("differing_parts").begin_array();
    for (const compare_part_row& row : compare_parts)
      if (c.status_of(row.part) == part_status::differs) json_.value(row.key);
    json_.end_array();
    json_.key("agree").value(c.agree());
    json_.end_object();
    json_.text() += '\n';
  }

 private:
  void begin(const compare_part_row& part, part_status status) {
    json_.key(part.key).begin_object();
    json_.key("status").value(status_key(status));
  }

  static std::string_view step_key(step_kind kind) {
    switch (kind) {
      case step_kind::finger_to_down: return "finger_to_down";
      case step_kind::held: return "held";
      case step_kind::down_to_asset: return "down_to_asset";
      case step_kind::up_to_asset: return "up_to_asset";
    }
    return {};
  }

  json_writer json_;
};

}  // namespace

std::unique_ptr<compare_printer> json_compare_printer(std::string& out) {
  return std::make_unique<json_printer>(out);
}

}  // namespace inspect
