// The one walk over a comparison every printer follows, and the words the
// printers for people share.

#include "inspect/outputs/compare_printer.h"

#include <cstdio>
#include <variant>

namespace inspect {

void write_comparison(const comparison& c, compare_printer& out) {
  out.heading(c);
  for (const compare_part_row& row : compare_parts) {
    const part_status status = c.status_of(row.part);
    switch (row.part) {
      case compare_part::press: out.press(row, status, c); break;
      case compare_part::statistics: out.fields(row, status, c.statistics); break;
      case compare_part::state_dumps: out.fields(row, status, c.state_dumps); break;
      case compare_part::records: out.records(row, status, c.records); break;
      case compare_part::events: out.events(row, status, c.events); break;
      case compare_part::sequence_numbers: out.sequences(row, status, c.sequence); break;
      case compare_part::assets: out.fields(row, status, c.assets); break;
      case compare_part::hid_reports: out.reports(row, status, c.hid); break;
      case compare_part::failures: out.failures(row, status, c.failures); break;
    }
  }
  out.finish(c);
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

std::string rate_text(std::optional<double> per_second) {
  if (!per_second) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.1f/s", *per_second);
  return text;
}

std::string report_text(const hid_report* report) {
  if (!report) return "not asked";
  if (report->failed) return "failed";
  return std::to_string(report->bytes.size()) + " bytes";
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
