// One JSON object: the verdict, the sides, and per metric its figures.

#include "inspect/gate/gate_outputs.h"
#include "inspect/outputs/json_writer.h"

namespace inspect::gate {
namespace {

void optional_number(json_writer& json, std::string_view key, const std::optional<double>& v) {
  json.key(key);
  if (v)
    json.number(*v);
  else
    json.null();
}

void side(json_writer& json, std::string_view key, const side_summary& s) {
  json.key(key).begin_object();
  json.key("source").value(s.source);
  json.key("harvests").value(s.harvests);
  json.key("captures").value(s.captures);
  json.end_object();
}

}  // namespace

void write_json(const gate_document& document, std::string& out) {
  json_writer json(out, true);
  json.begin_object();
  json.key("verdict").value(outcome_name(document.report.verdict));
  json.key("exit_status").value(std::int64_t{exit_status(document.report.verdict)});
  json.key("level").number(level);
  json.key("alpha").number(alpha);
  side(json, "baseline", document.baseline);
  side(json, "candidate", document.candidate);
  json.key("metrics").begin_array();
  for (const metric_result& m : document.report.metrics) {
    json.begin_object();
    json.key("name").value(m.name);
    json.key("family").value(m.family->family);
    json.key("unit").value(unit_name(m.family->measure));
    json.key("bad_side").value(m.family->bad == bad_side::higher ? "higher" : "either");
    json.key("n_baseline").value(m.n_baseline);
    json.key("n_candidate").value(m.n_candidate);
    optional_number(json, "baseline", m.baseline);
    optional_number(json, "candidate", m.candidate);
    optional_number(json, "change", m.change);
    optional_number(json, "ci_low", m.ci_low);
    optional_number(json, "ci_high", m.ci_high);
    optional_number(json, "p_value", m.p_value);
    optional_number(json, "q_value", m.q_value);
    json.key("budget").number(m.budget);
    json.key("budget_text").value(m.budget_text);
    json.key("outcome").value(outcome_name(m.result));
    json.key("needed_per_side");
    if (m.needed_per_side)
      json.value(*m.needed_per_side);
    else
      json.null();
    json.end_object();
  }
  json.end_array();
  json.end_object();
  out += '\n';
}

}  // namespace inspect::gate
