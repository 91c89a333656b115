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

  void begin_part(const compare_part_row& part, part_status status) override {
    out_ += "\n";
    out_ += part.title;
    out_ += ": ";
    out_ += status_label(status);
    out_ += "\n";
  }
  void end_part() override {}
  void value(std::string_view, const compare_cell&) override {}
  void note(std::string_view text) override {
    out_ += "  ";
    out_ += text;
    out_ += "\n";
  }
  void header(std::string_view note_title) override { row("", "A", "B", note_title); }
  void pair(std::string_view label, std::string_view, const compare_cell& a, std::string_view,
            const compare_cell& b, std::string_view note) override {
    if (!label.empty()) row(label, a.text, b.text, note);
  }

  void table(std::string_view, std::span<const compare_column> columns, const compare_rows& rows,
             bool lines) override {
    if (lines) {
      for (const std::vector<compare_cell>& cells : rows) note(slot_text(columns, cells, compare_slot::name));
      return;
    }
    // Rows under a group's heading are set in under it.
    const bool grouped = std::any_of(columns.begin(), columns.end(), [](const compare_column& c) {
      return c.slot == compare_slot::group;
    });
    std::string group;
    for (const std::vector<compare_cell>& cells : rows) {
      if (std::string heading = slot_text(columns, cells, compare_slot::group); heading != group) {
        group = std::move(heading);
        note(group);
      }
      std::string name = grouped ? "  " : "";
      name += slot_text(columns, cells, compare_slot::name);
      row(name, slot_text(columns, cells, compare_slot::a), slot_text(columns, cells, compare_slot::b),
          slot_text(columns, cells, compare_slot::note));
    }
  }

  void sides(std::span<const compare_side_row> rows) override {
    for (const compare_side_row& r : rows)
      if (!r.label.empty()) row(r.label, std::to_string(r.a), std::to_string(r.b), "");
  }

  void failures(const failure_comparison& f) override {
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
  void row(std::string_view name, std::string_view a, std::string_view b, std::string_view note) {
    std::string line = "  ";
    line += padded(name, name_width);
    line += padded(a, value_width);
    line += padded(b, value_width);
    line += note;
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out_ += line;
    out_ += "\n";
  }

  std::string& out_;
};

}  // namespace

std::unique_ptr<compare_printer> text_compare_printer(std::string& out) {
  return std::make_unique<text_printer>(out);
}

}  // namespace inspect
