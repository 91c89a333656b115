// The verdict first, then one line per metric, regressions first.

#include <array>

#include "inspect/gate/gate_outputs.h"
#include "inspect/outputs/text_format.h"

namespace inspect::gate {
namespace {

std::string optional_text(const std::optional<double>& value, unit measure, bool change) {
  return value ? value_text(*value, measure, change) : "-";
}

std::string side_line(std::string_view label, const side_summary& side) {
  std::string line;
  append_format(line, "  %-10s %s: %llu harvests, %llu captures\n", std::string(label).c_str(),
                side.source.c_str(), static_cast<unsigned long long>(side.harvests),
                static_cast<unsigned long long>(side.captures));
  return line;
}

}  // namespace

std::string value_text(double value, unit measure, bool change) {
  std::string text;
  if (value == 0) value = 0;  // no "-0"
  const char* sign = change && value >= 0 ? "+" : "";
  switch (measure) {
    case unit::microseconds: append_format(text, "%s%.1f us", sign, value); break;
    case unit::records: append_format(text, "%s%.3g", sign, value); break;
    case unit::records_per_second: append_format(text, "%s%.4g/s", sign, value); break;
    case unit::share:
      append_format(text, change ? "%s%.2f pp" : "%s%.2f%%", sign, value * 100);
      break;
  }
  return text;
}

std::string interval_text(const metric_result& m) {
  if (!m.ci_low || !m.ci_high) return {};
  const unit measure = m.family->measure;
  // Piece by piece: GCC's -O3 takes a literal joined to a temporary string
  // for an overlapping copy.
  std::string text = "[";
  text += value_text(*m.ci_low, measure, true);
  text += ", ";
  text += value_text(*m.ci_high, measure, true);
  text += "]";
  return text;
}

void write_text(const gate_document& document, std::string& out) {
  const gate_report& report = document.report;
  std::array<std::size_t, 4> counts{};
  for (const metric_result& m : report.metrics) ++counts[static_cast<std::size_t>(m.result)];
  append_format(out, "gate: %s (%zu regressed, %zu unknown, %zu same, %zu improved)\n",
                std::string(outcome_name(report.verdict)).c_str(), counts[0], counts[1],
                counts[2], counts[3]);
  out += side_line("baseline", document.baseline);
  out += side_line("candidate", document.candidate);
  append_format(out,
                "  changes are candidate - baseline with %.0f%% intervals; q: p-values "
                "adjusted across the %zu metrics\n\n",
                level * 100, report.metrics.size());
  const std::array<std::string, 10> head = {"metric", "outcome", "n base", "n cand", "baseline",
                                            "candidate", "change", "interval", "q", "budget"};
  const std::array<std::size_t, 10> width = {34, 10, 8, 8, 12, 12, 12, 28, 10, 12};
  const auto row = [&](const std::array<std::string, 10>& cells) {
    std::string line;
    for (std::size_t c = 0; c < cells.size(); ++c)
      line += c + 1 == cells.size() ? cells[c] : padded(cells[c], width[c]) + " ";
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out += line + "\n";
  };
  row(head);
  for (const metric_result& m : report.metrics) {
    const unit measure = m.family->measure;
    const std::string bounds = m.ci_low && m.ci_high ? interval_text(m) : "-";
    std::string q = "-";
    if (m.q_value) append_format(q = "", "%.3g", *m.q_value);
    row({m.name, std::string(outcome_name(m.result)), std::to_string(m.n_baseline),
         std::to_string(m.n_candidate), optional_text(m.baseline, measure, false),
         optional_text(m.candidate, measure, false), optional_text(m.change, measure, true),
         bounds, q, m.budget_text});
  }
  bool any = false;
  for (const metric_result& m : report.metrics) {
    if (m.result != outcome::unknown) continue;
    if (!any) out += "\nunknown: measure more\n";
    any = true;
    if (m.needed_per_side)
      append_format(out, "  %-34s about %llu harvests a side would decide it\n", m.name.c_str(),
                    static_cast<unsigned long long>(*m.needed_per_side));
    else
      append_format(out, "  %-34s too few values on a side to say how many more\n",
                    m.name.c_str());
  }
}

}  // namespace inspect::gate
