// The comparison as aligned text for people: a part under its title and
// status, what differs in it, "no difference" where nothing does.

#include <algorithm>

#include "inspect/capture/number_text.h"
#include "inspect/outputs/compare_printer.h"
#include "inspect/outputs/text_format.h"

namespace inspect {
namespace {

constexpr std::size_t name_width = 34;
constexpr std::size_t value_width = 16;

std::string count_or_dash(std::optional<std::uint64_t> value) {
  return value ? std::to_string(*value) : "-";
}

std::string side_text(const compare_side& side) {
  const capture_model& model = *side.model;
  std::string text = input_label(model.input);
  append_format(text, ", harvest %zu of %zu", side.harvest + 1, model.harvests.size());
  if (!model.damage.empty())
    append_format(text, ", DAMAGED in %zu place%s (compared as read)", model.damage.size(),
                  model.damage.size() == 1 ? "" : "s");
  return text;
}

class text_printer final : public compare_printer {
 public:
  explicit text_printer(std::string& out) : out_(out) {}

  void heading(const comparison& c) override {
    out_ += "kelvra-inspect compare\n";
    out_ += "  A  " + side_text(c.a) + "\n";
    out_ += "  B  " + side_text(c.b) + "\n";
    append_format(out_,
                  "  latencies agree within %llu µs; timestamps, sequence numbers and "
                  "calendar times are not compared\n",
                  static_cast<unsigned long long>(c.options.tolerance_us));
    if (c.options.ignore.empty()) return;
    out_ += "  differences ignored in:";
    for (const compare_part part : c.options.ignore) {
      out_ += ' ';
      out_ += compare_parts[static_cast<std::size_t>(part)].key;
    }
    out_ += "\n";
  }

  void press(const compare_part_row& part, part_status status, const comparison& c) override {
    title(part, status);
    const press_comparison& p = c.press;
    if (!p.clicks_a && !p.clicks_b) {
      out_ += "  neither capture has a statistics record\n";
      return;
    }
    row("", "A", "B", "difference");
    row("clicks", count_or_dash(p.clicks_a), count_or_dash(p.clicks_b),
        p.clicks == verdict::same ? "" : "differs");
    for (const latency_change& l : p.latencies) {
      std::string difference;
      if (l.difference)
        difference = padded(signed_micro_text(*l.difference), 12) + percent_text(l.percent);
      if (l.result != verdict::same)
        difference += (difference.empty() ? "" : "  ") + std::string(verdict_label(l.result));
      row(l.label, micros_text(l.a), micros_text(l.b), difference);
    }
  }

  void fields(const compare_part_row& part, part_status status,
              const field_comparison& f) override {
    title(part, status);
    if (f.one_sided.empty() && f.changes.empty()) {
      if (f.unchanged == 0)
        out_ += "  in neither capture\n";
      else
        append_format(out_, "  no difference in %zu fields\n", f.unchanged);
      return;
    }
    for (const one_sided_block& block : f.one_sided)
      append_format(out_, "  %s: only in %s (%zu fields)\n", block.where.c_str(),
                    block.in_a ? "A" : "B", block.fields);
    if (!f.changes.empty()) row("", "A", "B", "");
    std::string_view where;
    for (const field_change& change : f.changes) {
      if (change.where != where) {
        where = change.where;
        out_ += "  " + change.where + "\n";
      }
      row("  " + field_name_text(change), change.a ? field_text(*change.a) : "-",
          change.b ? field_text(*change.b) : "-", std::string(verdict_label(change.result)));
    }
    if (f.unchanged != 0) append_format(out_, "  %zu fields the same\n", f.unchanged);
  }

  void records(const compare_part_row& part, part_status status,
               const records_comparison& r) override {
    title(part, status);
    row("", "A", "B", "");
    row("records", std::to_string(r.a), std::to_string(r.b), "");
    row("span", milliseconds_text(static_cast<std::int64_t>(r.a_span_us)) + " ms",
        milliseconds_text(static_cast<std::int64_t>(r.b_span_us)) + " ms", "");
    for (const component_rate& c : r.components)
      row(c.category + " · " + c.component,
          padded(std::to_string(c.a), 7) + rate_text(c.a_per_second),
          padded(std::to_string(c.b), 7) + rate_text(c.b_per_second),
          c.result == verdict::same ? "" : std::string(verdict_label(c.result)));
  }

  void events(const compare_part_row& part, part_status status,
              const events_comparison& e) override {
    title(part, status);
    append_format(out_, "  %zu event names in both\n", e.shared);
    for (const auto& [side, list] : {std::pair{"A", &e.only_a}, std::pair{"B", &e.only_b}})
      for (const event_name& name : *list)
        append_format(out_, "  only in %s: %s · %s · %s\n", side, name.category.c_str(),
                      name.component.c_str(), name.event.c_str());
  }

  void sequences(const compare_part_row& part, part_status status,
                 const sequence_comparison& s) override {
    title(part, status);
    row("", "A", "B", "");
    const struct {
      std::string_view label;
      std::uint64_t a, b;
    } rows[] = {{"runs of numbers", s.a.runs, s.b.runs},
                {"numbers lost", s.a.lost, s.b.lost},
                {"numbers repeated", s.a.repeated, s.b.repeated},
                {"out of order", s.a.out_of_order, s.b.out_of_order}};
    for (const auto& r : rows)
      row(std::string(r.label), std::to_string(r.a), std::to_string(r.b), "");
  }

  void reports(const compare_part_row& part, part_status status, const hid_comparison& h) override {
    title(part, status);
    if (h.reports.empty()) {
      out_ += "  in neither capture\n";
      return;
    }
    row("", "A", "B", "");
    for (const report_change& r : h.reports) {
      std::string note = r.result == verdict::same ? "" : "differs";
      if (!r.offsets.empty()) {
        note += " at byte";
        note += r.offsets.size() == 1 ? " " : "s ";
        for (std::size_t i = 0; i < r.offsets.size(); ++i) {
          if (i) note += ',';
          note += std::to_string(r.offsets[i]);
        }
      }
      row("report " + hex_text(r.id), report_text(r.a), report_text(r.b), note);
    }
  }

  void failures(const compare_part_row& part, part_status status,
                const failure_comparison& f) override {
    title(part, status);
    append_format(out_, "  %zu in both, %zu only in A, %zu only in B\n", f.both.size(),
                  f.only_a.size(), f.only_b.size());
    for (const auto& [side, list] : {std::pair{"A", &f.only_a}, std::pair{"B", &f.only_b}}) {
      for (const failure_line* line : *list) {
        append_format(out_, "  only in %s, line %llu: ", side,
                      static_cast<unsigned long long>(line->line));
        out_ += line->text + "\n    " + line->meaning + "\n";
      }
    }
    for (const auto& [a, b] : f.both)
      append_format(out_, "  in both, lines %llu and %llu: %s\n",
                    static_cast<unsigned long long>(a->line),
                    static_cast<unsigned long long>(b->line), a->text.c_str());
  }

  void finish(const comparison& c) override {
    std::string differ, ignored;
    for (const compare_part_row& row : compare_parts) {
      if (c.status_of(row.part) == part_status::differs)
        differ += (differ.empty() ? "" : ", ") + std::string(row.key);
      if (c.status_of(row.part) == part_status::ignored)
        ignored += (ignored.empty() ? "" : ", ") + std::string(row.key);
    }
    out_ += c.agree() ? "\nThe captures agree" : "\nThe captures differ: " + differ;
    if (!ignored.empty()) out_ += " (differences ignored: " + ignored + ")";
    out_ += ".\n";
  }

 private:
  void title(const compare_part_row& part, part_status status) {
    out_ += "\n";
    out_ += part.title;
    out_ += ": ";
    out_ += status_label(status);
    out_ += "\n";
  }

  void row(const std::string& name, const std::string& a, const std::string& b,
           const std::string& note) {
    std::string line =
        "  " + padded(name, name_width) + padded(a, value_width) + padded(b, value_width) + note;
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out_ += line + "\n";
  }

  std::string& out_;
};

}  // namespace

std::unique_ptr<compare_printer> text_compare_printer(std::string& out) {
  return std::make_unique<text_printer>(out);
}

}  // namespace inspect
