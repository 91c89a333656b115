// The comparison as one self-contained HTML page in the style of the
// timeline (inline SVG, no script, nothing fetched): the picture of both
// presses, then every part as a table.

#include <algorithm>
#include <cctype>

#include "inspect/capture/number_text.h"
#include "inspect/outputs/compare_picture.h"
#include "inspect/outputs/compare_printer.h"
#include "inspect/outputs/page_parts.h"
#include "inspect/outputs/text_format.h"

namespace inspect {
namespace {

std::string capitalised(std::string_view text) {
  std::string result(text);
  if (!result.empty())
    result[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(result[0])));
  return result;
}

class page_printer final : public compare_printer {
 public:
  explicit page_printer(std::string& out) : out_(out) {}

  void heading(const comparison& c) override {
    const std::string title = "Button press compared: " + input_label(c.a.model->input) + " and " +
                              input_label(c.b.model->input);
    append_page_head(out_, title,
                     "table{border-collapse:collapse}td,th{padding:2px 12px 2px 0;text-align:left}\n"
                     ".quiet{color:#777}\n");
    out_ += "</h1>\n";
    for (const auto& [name, side] : {std::pair{"A", &c.a}, std::pair{"B", &c.b}}) {
      const capture_model& model = *side->model;
      out_ += "<p class=\"sub\">";
      append_format(out_, "%s: ", name);
      append_html(out_, input_label(model.input));
      append_format(out_, ", harvest %zu of %zu", side->harvest + 1, model.harvests.size());
      if (!model.damage.empty())
        append_format(out_, " <span class=\"bad\">(damaged in %zu places, compared as read)</span>",
                      model.damage.size());
      out_ += "</p>\n";
    }
    std::string differing;
    for (const compare_part_row& row : compare_parts)
      if (c.status_of(row.part) == part_status::differs)
        differing += (differing.empty() ? " in: " : ", ") + std::string(row.title);
    out_ +=
        c.agree() ? "<p class=\"sub\">The captures agree." : "<p class=\"bad\">The captures differ";
    append_html(out_, differing);
    append_format(out_,
                  "%s Latencies agree within %llu µs; timestamps, sequence numbers and calendar "
                  "times are not compared.</p>\n",
                  c.agree() ? "" : ".", static_cast<unsigned long long>(c.options.tolerance_us));
  }

  void press(const compare_part_row& part, part_status status, const comparison& c) override {
    if (c.press.clicks_a || c.press.clicks_b)
      write_press_picture(c, out_);
    else
      out_ += "<p class=\"bad\">Nothing to draw: neither capture has a statistics record.</p>\n";
    title(part, status);
    out_ +=
        "<table>\n<tr><th></th><th>A</th><th>B</th><th>difference</th><th></th><th></th></tr>\n";
    const auto count = [](std::optional<std::uint64_t> v) { return v ? std::to_string(*v) : "-"; };
    cells({"clicks", count(c.press.clicks_a), count(c.press.clicks_b), "", "",
           c.press.clicks == verdict::same ? "" : "differs"});
    for (const latency_change& l : c.press.latencies)
      cells({l.label, micros_text(l.a), micros_text(l.b),
             l.difference ? signed_micro_text(*l.difference) : "", percent_text(l.percent),
             l.result == verdict::same ? "" : std::string(verdict_label(l.result))});
    out_ += "</table>\n";
  }

  void fields(const compare_part_row& part, part_status status,
              const field_comparison& f) override {
    title(part, status);
    for (const one_sided_block& block : f.one_sided)
      paragraph(block.where + ": only in " + (block.in_a ? "A" : "B") + " (" +
                    std::to_string(block.fields) + " fields)",
                "bad");
    if (!f.changes.empty()) {
      out_ += "<table>\n<tr><th></th><th>field</th><th>A</th><th>B</th><th></th></tr>\n";
      for (const field_change& change : f.changes)
        cells({change.where, field_name_text(change), change.a ? field_text(*change.a) : "-",
               change.b ? field_text(*change.b) : "-", std::string(verdict_label(change.result))});
      out_ += "</table>\n";
    }
    paragraph(std::to_string(f.unchanged) + " fields the same", "quiet");
  }

  void records(const compare_part_row& part, part_status status,
               const records_comparison& r) override {
    title(part, status);
    out_ += "<table>\n<tr><th></th><th>A</th><th></th><th>B</th><th></th><th></th></tr>\n";
    cells({"records", std::to_string(r.a),
           milliseconds_text(static_cast<std::int64_t>(r.a_span_us)) + " ms", std::to_string(r.b),
           milliseconds_text(static_cast<std::int64_t>(r.b_span_us)) + " ms", ""});
    for (const component_rate& c : r.components)
      cells({c.category + " · " + c.component, std::to_string(c.a), rate_text(c.a_per_second),
             std::to_string(c.b), rate_text(c.b_per_second),
             c.result == verdict::same ? "" : std::string(verdict_label(c.result))});
    out_ += "</table>\n";
  }

  void events(const compare_part_row& part, part_status status,
              const events_comparison& e) override {
    title(part, status);
    paragraph(std::to_string(e.shared) + " event names in both", "quiet");
    for (const auto& [side, list] : {std::pair{"A", &e.only_a}, std::pair{"B", &e.only_b}})
      for (const event_name& name : *list)
        paragraph("only in " + std::string(side) + ": " + name.category + " · " + name.component +
                      " · " + name.event,
                  "bad");
  }

  void sequences(const compare_part_row& part, part_status status,
                 const sequence_comparison& s) override {
    title(part, status);
    out_ += "<table>\n<tr><th></th><th>A</th><th>B</th></tr>\n";
    cells({"runs of numbers", std::to_string(s.a.runs), std::to_string(s.b.runs)});
    cells({"numbers lost", std::to_string(s.a.lost), std::to_string(s.b.lost)});
    cells({"numbers repeated", std::to_string(s.a.repeated), std::to_string(s.b.repeated)});
    cells({"out of order", std::to_string(s.a.out_of_order), std::to_string(s.b.out_of_order)});
    out_ += "</table>\n";
  }

  void reports(const compare_part_row& part, part_status status, const hid_comparison& h) override {
    title(part, status);
    out_ += "<table>\n<tr><th></th><th>A</th><th>B</th><th>bytes that differ</th></tr>\n";
    for (const report_change& r : h.reports) {
      std::string offsets;
      for (const std::size_t offset : r.offsets)
        offsets += (offsets.empty() ? "" : ", ") + std::to_string(offset);
      cells({"report " + hex_text(r.id), report_text(r.a), report_text(r.b),
             r.result == verdict::same ? ""
             : offsets.empty()         ? "differs"
                                       : offsets});
    }
    out_ += "</table>\n";
  }

  void failures(const compare_part_row& part, part_status status,
                const failure_comparison& f) override {
    title(part, status);
    paragraph(std::to_string(f.both.size()) + " in both, " + std::to_string(f.only_a.size()) +
                  " only in A, " + std::to_string(f.only_b.size()) + " only in B",
              "quiet");
    out_ += "<ul>\n";
    for (const auto& [side, list] : {std::pair{"A", &f.only_a}, std::pair{"B", &f.only_b}}) {
      for (const failure_line* line : *list) {
        append_format(out_, "<li class=\"bad\">only in %s, line %llu: <code>", side,
                      static_cast<unsigned long long>(line->line));
        append_html(out_, line->text);
        out_ += "</code><br>";
        append_html(out_, line->meaning);
        out_ += "</li>\n";
      }
    }
    for (const auto& [a, b] : f.both) {
      append_format(out_, "<li>in both, lines %llu and %llu: <code>",
                    static_cast<unsigned long long>(a->line),
                    static_cast<unsigned long long>(b->line));
      append_html(out_, a->text);
      out_ += "</code></li>\n";
    }
    out_ += "</ul>\n";
  }

  void finish(const comparison&) override { out_ += "</body>\n</html>\n"; }

 private:
  void title(const compare_part_row& part, part_status status) {
    const bool bad = status == part_status::differs;
    out_ += bad ? "<h2 class=\"bad\">" : "<h2>";
    append_html(out_, capitalised(part.title) + ": " + std::string(status_label(status)));
    out_ += "</h2>\n";
  }

  void paragraph(const std::string& text, std::string_view style) {
    out_ += "<p class=\"";
    out_ += style;
    out_ += "\">";
    append_html(out_, text);
    out_ += "</p>\n";
  }

  void cells(std::initializer_list<std::string> texts) {
    out_ += "<tr>";
    for (const std::string& text : texts) {
      out_ += "<td>";
      append_html(out_, text);
      out_ += "</td>";
    }
    out_ += "</tr>\n";
  }

  std::string& out_;
};

}  // namespace

std::unique_ptr<compare_printer> page_compare_printer(std::string& out) {
  return std::make_unique<page_printer>(out);
}

}  // namespace inspect
