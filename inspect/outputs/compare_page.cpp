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
    comparison_ = &c;
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

  void begin_part(const compare_part_row& part, part_status status) override {
    if (part.part == compare_part::press) {
      if (comparison_->press.clicks_a || comparison_->press.clicks_b)
        write_press_picture(*comparison_, out_);
      else
        out_ += "<p class=\"bad\">Nothing to draw: neither capture has a statistics record.</p>\n";
    }
    const bool bad = status == part_status::differs;
    out_ += bad ? "<h2 class=\"bad\">" : "<h2>";
    append_html(out_, capitalised(part.title) + ": " + std::string(status_label(status)));
    out_ += "</h2>\n";
  }
  void end_part() override { close_table(); }
  void value(std::string_view, const compare_cell&) override {}
  void note(std::string_view text) override {
    close_table();
    paragraph(text, "quiet");
  }
  void header(std::string_view note_title) override {
    close_table();
    note_title_ = note_title;
  }
  void pair(std::string_view label, std::string_view, const compare_cell& a, std::string_view,
            const compare_cell& b, std::string_view note) override {
    if (label.empty()) return;
    open_table(false);
    cells({std::string(label), a.text, b.text, std::string(note)});
  }

  void table(std::string_view, std::span<const compare_column> columns, const compare_rows& rows,
             bool lines) override {
    if (lines) {
      if (!rows.empty()) close_table();
      for (const std::vector<compare_cell>& row : rows)
        paragraph(slot_text(columns, row, compare_slot::name), "bad");
      return;
    }
    const bool grouped = std::any_of(columns.begin(), columns.end(), [](const compare_column& c) {
      return c.slot == compare_slot::group;
    });
    for (const std::vector<compare_cell>& row : rows) {
      open_table(grouped);
      std::vector<std::string> texts;
      for (const compare_slot slot : {compare_slot::group, compare_slot::name, compare_slot::a,
                                      compare_slot::b, compare_slot::note})
        if (slot != compare_slot::group || grouped) texts.push_back(slot_text(columns, row, slot));
      cells(texts);
    }
  }

  void sides(std::span<const compare_side_row> rows) override {
    for (const compare_side_row& r : rows) {
      if (r.label.empty()) continue;
      open_table(false);
      cells({std::string(r.label), std::to_string(r.a), std::to_string(r.b), ""});
    }
  }

  void failures(const failure_comparison& f) override {
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
  // A table opens at its first row, under the heads header() gave.
  void open_table(bool grouped) {
    if (table_open_) return;
    table_open_ = true;
    out_ += "<table>\n<tr>";
    if (grouped) out_ += "<th></th>";
    out_ += "<th></th><th>A</th><th>B</th><th>";
    append_html(out_, note_title_);
    out_ += "</th></tr>\n";
  }

  void close_table() {
    if (!table_open_) return;
    table_open_ = false;
    out_ += "</table>\n";
  }

  void paragraph(std::string_view text, std::string_view style) {
    out_ += "<p class=\"";
    out_ += style;
    out_ += "\">";
    append_html(out_, text);
    out_ += "</p>\n";
  }

  void cells(const std::vector<std::string>& texts) {
    out_ += "<tr>";
    for (const std::string& text : texts) {
      out_ += "<td>";
      append_html(out_, text);
      out_ += "</td>";
    }
    out_ += "</tr>\n";
  }

  std::string& out_;
  const comparison* comparison_ = nullptr;
  std::string note_title_;
  bool table_open_ = false;
};

}  // namespace

std::unique_ptr<compare_printer> page_compare_printer(std::string& out) {
  return std::make_unique<page_printer>(out);
}

}  // namespace inspect
