// One self-contained page: the verdict, the table of metrics, and per
// metric the two sides drawn (empirical CDFs of values, bars of shares)
// with the change and its interval.

#include <algorithm>
#include <cmath>

#include "inspect/gate/gate_outputs.h"
#include "inspect/outputs/page_parts.h"
#include "inspect/outputs/text_format.h"

namespace inspect::gate {
namespace {

constexpr double plot_width = 560, plot_height = 180, left = 70, top = 10, bottom = 30;
constexpr std::string_view baseline_colour = finger_colour;
constexpr std::string_view candidate_colour = asset_colour;
constexpr std::size_t curve_points = 240;

constexpr std::string_view own_style =
    "table{border-collapse:collapse}td,th{padding:2px 8px;text-align:right;white-space:nowrap}"
    "td:first-child,th:first-child{text-align:left}.regressed{color:#b00020;font-weight:bold}"
    ".improved{color:#2c7a2c}.unknown{color:#8a6d00}.metric{display:inline-block;"
    "margin:0 16px 16px 0;vertical-align:top}\n";

// The empirical CDF as a step path, at most `curve_points` steps.
void cdf_path(std::string& out, std::span<const double> sorted, double low, double high,
              std::string_view colour) {
  const double span = high > low ? high - low : 1;
  const auto x_of = [&](double v) { return left + (v - low) / span * (plot_width - left - 10); };
  const auto y_of = [&](double f) { return top + (1 - f) * (plot_height - top - bottom); };
  out += "<path fill=\"none\" stroke-width=\"2\" stroke=\"";
  out += colour;
  out += "\" d=\"";
  const std::size_t n = sorted.size();
  append_format(out, "M%.1f %.1f", x_of(sorted.front()), y_of(0));
  const std::size_t steps = std::min(n, curve_points);
  for (std::size_t s = 1; s <= steps; ++s) {
    const std::size_t index = s * n / steps - 1;
    append_format(out, "H%.1fV%.1f", x_of(sorted[index]), y_of(static_cast<double>(index + 1) / static_cast<double>(n)));
  }
  out += "\"/>\n";
}

void value_plot(std::string& out, const metric_result& m) {
  const double low = std::min(m.baseline_values.front(), m.candidate_values.front());
  const double high = std::max(m.baseline_values.back(), m.candidate_values.back());
  append_format(out, "<svg width=\"%.0f\" height=\"%.0f\" role=\"img\">\n", plot_width, plot_height);
  append_format(out, "<text x=\"4\" y=\"%.0f\">0</text><text x=\"4\" y=\"%.0f\">1</text>\n",
                plot_height - bottom, top + 10);
  append_format(out, "<text x=\"%.0f\" y=\"%.0f\">", left, plot_height - 8);
  append_html(out, value_text(low, m.family->measure, false));
  append_format(out, "</text><text x=\"%.0f\" y=\"%.0f\" text-anchor=\"end\">", plot_width - 10,
                plot_height - 8);
  append_html(out, value_text(high, m.family->measure, false));
  out += "</text>\n";
  cdf_path(out, m.baseline_values, low, high, baseline_colour);
  cdf_path(out, m.candidate_values, low, high, candidate_colour);
  out += "</svg>\n";
}

void share_plot(std::string& out, const metric_result& m) {
  append_format(out, "<svg width=\"%.0f\" height=\"70\" role=\"img\">\n", plot_width);
  const double scale = (plot_width - left - 10) /
                       std::max({m.baseline.value_or(0), m.candidate.value_or(0), 1e-9});
  double y = 10;
  for (const auto& [share, colour, name] :
       {std::tuple{m.baseline, baseline_colour, "baseline"},
        std::tuple{m.candidate, candidate_colour, "candidate"}}) {
    append_format(out, "<text x=\"4\" y=\"%.0f\">%s</text>", y + 14, name);
    append_format(out, "<rect x=\"%.0f\" y=\"%.0f\" width=\"%.1f\" height=\"20\" fill=\"%s\"/>\n",
                  left, y, share.value_or(0) * scale, std::string(colour).c_str());
    y += 28;
  }
  out += "</svg>\n";
}

// The outcome in its colour, inside `tag` (td, span).
void append_outcome(std::string& out, std::string_view tag, outcome result) {
  const std::string_view name = outcome_name(result);
  out += "<";
  out += tag;
  out += " class=\"";
  out += name;
  out += "\">";
  out += name;
  out += "</";
  out += tag;
  out += ">";
}

}  // namespace

void write_page(const gate_document& document, std::string& out) {
  const gate_report& report = document.report;
  append_page_head(out, "Gate: " + std::string(outcome_name(report.verdict)), own_style);
  out += "</h1>\n<p class=\"sub\">baseline <span style=\"color:";
  out += baseline_colour;
  out += "\">&#9632;</span> ";
  append_html(out, document.baseline.source);
  append_format(out, " (%llu harvests), candidate <span style=\"color:",
                static_cast<unsigned long long>(document.baseline.harvests));
  out += candidate_colour;
  out += "\">&#9632;</span> ";
  append_html(out, document.candidate.source);
  append_format(out, " (%llu harvests); changes are candidate &minus; baseline, %.0f%% intervals</p>\n",
                static_cast<unsigned long long>(document.candidate.harvests), level * 100);
  out += "<table>\n<tr><th>metric</th><th>outcome</th><th>baseline</th><th>candidate</th>"
         "<th>change</th><th>interval</th><th>q</th><th>budget</th></tr>\n";
  for (const metric_result& m : report.metrics) {
    const unit measure = m.family->measure;
    out += "<tr><td>";
    append_html(out, m.name);
    out += "</td>";
    append_outcome(out, "td", m.result);
    for (const auto* v : {&m.baseline, &m.candidate, &m.change}) {
      out += "<td>";
      append_html(out, *v ? value_text(**v, measure, v == &m.change) : "-");
      out += "</td>";
    }
    out += "<td>";
    append_html(out, interval_text(m));
    out += "</td><td>";
    if (m.q_value) append_format(out, "%.3g", *m.q_value);
    out += "</td><td>";
    append_html(out, m.budget_text);
    out += "</td></tr>\n";
  }
  out += "</table>\n";
  for (const metric_result& m : report.metrics) {
    const bool values = !m.baseline_values.empty() && !m.candidate_values.empty();
    if (!values && (m.family->measure != unit::share || !m.baseline || !m.candidate)) continue;
    out += "<div class=\"metric\"><h2>";
    append_html(out, m.name);
    out += " ";
    append_outcome(out, "span", m.result);
    out += "</h2>\n<p class=\"sub\">";
    if (m.change) {
      append_html(out, "change " + value_text(*m.change, m.family->measure, true));
      if (m.ci_low && m.ci_high) append_html(out, ", interval " + interval_text(m));
      append_html(out, ", budget " + m.budget_text);
    }
    out += "</p>\n";
    if (values)
      value_plot(out, m);
    else
      share_plot(out, m);
    out += "</div>\n";
  }
  out += "</body>\n</html>\n";
}

}  // namespace inspect::gate
