#include "inspect/gate/verdict.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <set>
#include <sstream>

#include "inspect/gate/statistics.h"

namespace inspect::gate {
namespace {

constexpr std::string_view outcome_names[] = {"regressed", "unknown", "same", "improved"};
constexpr std::string_view unit_names[] = {"us", "records", "records/s", "share"};

// LLVM's C++ library has no floating from_chars; a stream in the classic
// locale reads the same decimal text whatever the user's locale.
std::optional<double> decimal_of(std::string_view text) {
  if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos)
    return std::nullopt;
  std::istringstream in{std::string(text)};
  in.imbue(std::locale::classic());
  double value = 0;
  if (!(in >> value) || in.peek() != std::char_traits<char>::eof()) return std::nullopt;
  return value;
}

double median(std::span<const double> sorted) {
  const std::size_t n = sorted.size();
  return n % 2 == 1 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2;
}

budget budget_for(std::string_view name, const family_row& family,
                  std::span<const budget_setting> settings) {
  budget chosen = family.allowed;
  // The family's setting, then the metric's own, whatever their order.
  for (const std::string_view wanted : {family.family, name})
    for (const budget_setting& s : settings)
      if (s.name == wanted) chosen = s.value;
  return chosen;
}

std::string budget_text(const budget& b, unit measure) {
  char text[48];
  const bool share = measure == unit::share;
  const double shown = share && !b.percent ? b.amount * 100 : b.amount;
  std::snprintf(text, sizeof text, "+%g%s", shown,
                share ? " pp" : b.percent ? "%" : measure == unit::microseconds ? " us"
                : measure == unit::records ? " records" : " records/s");
  return text;
}

// Where the interval lies against the budget.
outcome decide(const metric_result& m) {
  if (!m.ci_low || !m.ci_high || !m.q_value) return outcome::unknown;
  const double low = *m.ci_low, high = *m.ci_high, b = m.budget;
  const bool significant = *m.q_value < alpha;
  if (m.family->bad == bad_side::higher) {
    if (significant && low > b) return outcome::regressed;
    if (significant && high < -b) return outcome::improved;
    if (high <= b) return outcome::same;
  } else {
    if (significant && (low > b || high < -b)) return outcome::regressed;
    if (low >= -b && high <= b) return outcome::same;
  }
  return outcome::unknown;
}

// Roughly how many harvests a side would narrow the interval enough to
// decide, its width falling as one over the root of the count.
std::optional<std::uint64_t> needed(const metric_result& m) {
  if (!m.ci_low || !m.ci_high || !m.change || m.n_baseline == 0 || m.n_candidate == 0)
    return std::nullopt;
  const double half = (*m.ci_high - *m.ci_low) / 2, d = *m.change, b = m.budget;
  double room;
  if (m.family->bad == bad_side::higher)
    room = d <= b ? b - d : d - b;
  else
    room = std::abs(std::abs(d) - b);
  if (!(room > 0) || !(half > 0)) return std::nullopt;
  const double now = static_cast<double>(m.n_baseline + m.n_candidate) / 2;
  const double wanted = std::ceil(now * (half / room) * (half / room));
  if (!(wanted < 1e15)) return std::nullopt;
  return static_cast<std::uint64_t>(std::max(wanted, now + 1));
}

template <class Map>
void add_names(const Map& map, std::set<std::string, std::less<>>& names) {
  for (const auto& entry : map) names.insert(entry.first);
}

std::uint64_t count_of(const std::map<std::string, std::uint64_t, std::less<>>& map,
                       std::string_view name) {
  const auto it = map.find(name);
  return it == map.end() ? 0 : it->second;
}

}  // namespace

std::string_view outcome_name(outcome o) { return outcome_names[static_cast<int>(o)]; }
std::string_view unit_name(unit u) { return unit_names[static_cast<int>(u)]; }

const family_row* family_of(std::string_view metric) {
  const std::string_view family = metric.substr(0, metric.find('.'));
  for (const family_row& row : families)
    if (row.family == family) return &row;
  return nullptr;
}

std::optional<budget_setting> parse_budget(std::string_view text, std::string& why) {
  const auto equals = text.find('=');
  if (equals == std::string_view::npos || equals == 0) {
    why = "a budget is NAME=+2% or NAME=+50us, not '" + std::string(text) + "'";
    return std::nullopt;
  }
  budget_setting setting{std::string(text.substr(0, equals)), {}};
  const family_row* family = family_of(setting.name);
  if (family == nullptr) {
    why = "no metric is called '" + setting.name + "'";
    return std::nullopt;
  }
  std::string_view amount = text.substr(equals + 1);
  if (!amount.empty() && amount.front() == '+') amount.remove_prefix(1);
  if (amount.ends_with('%')) {
    setting.value.percent = true;
    amount.remove_suffix(1);
  } else if (amount.ends_with("us")) {
    if (family->measure != unit::microseconds) {
      why = "'" + setting.name + "' is not in microseconds";
      return std::nullopt;
    }
    amount.remove_suffix(2);
  }
  const std::optional<double> parsed = decimal_of(amount);
  if (parsed) setting.value.amount = *parsed;
  if (!parsed || !(setting.value.amount >= 0) || !std::isfinite(setting.value.amount)) {
    why = "the budget of '" + setting.name + "' is not a number: '" + std::string(text) + "'";
    return std::nullopt;
  }
  return setting;
}

gate_report judge(std::array<side_samples, 2>& sides, std::span<const budget_setting> settings) {
  gate_report report;
  std::set<std::string, std::less<>> value_names, harvest_names, capture_names;
  for (side_samples& side : sides) {
    add_names(side.values, value_names);
    add_names(side.harvests_with, harvest_names);
    add_names(side.captures_with, capture_names);
    for (auto& entry : side.values) std::sort(entry.second.begin(), entry.second.end());
  }
  for (const std::string& name : value_names) {
    metric_result m;
    m.name = name;
    m.family = family_of(name);
    std::array<std::span<const double>, 2> values;
    for (std::size_t s = 0; s < 2; ++s)
      if (const auto it = sides[s].values.find(name); it != sides[s].values.end())
        values[s] = it->second;
    m.baseline_values = values[0];
    m.candidate_values = values[1];
    m.n_baseline = values[0].size();
    m.n_candidate = values[1].size();
    if (!values[0].empty()) m.baseline = median(values[0]);
    if (!values[1].empty()) m.candidate = median(values[1]);
    if (!values[0].empty() && !values[1].empty()) {
      const shift_estimate shift = hodges_lehmann(values[0], values[1], level);
      m.change = shift.shift;
      m.ci_low = shift.low;
      m.ci_high = shift.high;
      m.p_value = mann_whitney(values[0], values[1]).p;
    }
    report.metrics.push_back(std::move(m));
  }
  for (const bool per_capture : {false, true}) {
    for (const std::string& name : per_capture ? capture_names : harvest_names) {
      metric_result m;
      m.name = name;
      m.family = family_of(name);
      const auto& hits = [&](std::size_t s) -> const auto& {
        return per_capture ? sides[s].captures_with : sides[s].harvests_with;
      };
      m.n_baseline = per_capture ? sides[0].captures : sides[0].harvests;
      m.n_candidate = per_capture ? sides[1].captures : sides[1].harvests;
      const std::uint64_t h0 = count_of(hits(0), name), h1 = count_of(hits(1), name);
      if (m.n_baseline > 0) m.baseline = static_cast<double>(h0) / static_cast<double>(m.n_baseline);
      if (m.n_candidate > 0) m.candidate = static_cast<double>(h1) / static_cast<double>(m.n_candidate);
      if (m.n_baseline > 0 && m.n_candidate > 0) {
        const share_difference d = newcombe(h0, m.n_baseline, h1, m.n_candidate, level);
        m.change = d.difference;
        m.ci_low = d.bounds.low;
        m.ci_high = d.bounds.high;
        m.p_value = fisher_exact(h1, m.n_candidate - h1, h0, m.n_baseline - h0);
      }
      report.metrics.push_back(std::move(m));
    }
  }
  // Names the tables give that no family knows are left out.
  std::erase_if(report.metrics, [](const metric_result& m) { return m.family == nullptr; });

  std::vector<double> p;
  for (const metric_result& m : report.metrics)
    if (m.p_value) p.push_back(*m.p_value);
  const std::vector<double> q = benjamini_hochberg(p);
  std::size_t next = 0;
  for (metric_result& m : report.metrics) {
    if (m.p_value) m.q_value = q[next++];
    const budget b = budget_for(m.name, *m.family, settings);
    const bool share = m.family->measure == unit::share;
    m.budget = share ? (b.percent ? b.amount / 100 : b.amount)
                     : b.percent ? b.amount / 100 * std::abs(m.baseline.value_or(0)) : b.amount;
    m.budget_text = budget_text(b, m.family->measure);
    m.result = decide(m);
    if (m.result == outcome::unknown) m.needed_per_side = needed(m);
  }
  std::stable_sort(report.metrics.begin(), report.metrics.end(),
                   [](const metric_result& a, const metric_result& b) { return a.result < b.result; });
  report.verdict = report.metrics.empty() ? outcome::unknown : report.metrics.front().result;
  return report;
}

int exit_status(outcome verdict) {
  switch (verdict) {
    case outcome::regressed: return 1;
    case outcome::unknown: return 3;
    default: return 0;
  }
}

}  // namespace inspect::gate
