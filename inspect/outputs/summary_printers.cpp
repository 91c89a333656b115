// The two printers of the summary: aligned text for people, one JSON object
// for tools. Each takes the same facts from the summary's one walk.

#include <algorithm>
#include <memory>

#include "inspect/capture/failure_meaning.h"
#include "inspect/capture/number_text.h"
#include "inspect/outputs/json_facts.h"
#include "inspect/outputs/json_writer.h"
#include "inspect/outputs/summary_printer.h"
#include "inspect/outputs/summary_view.h"
#include "inspect/outputs/text_format.h"

namespace inspect {
namespace {

constexpr std::size_t label_width = 30;
constexpr std::size_t listed_at_most = 10;  // gaps and repeats in the text

std::string text_of(const summary_value& value) {
  using kind = summary_value::kind;
  switch (value.shape) {
    case kind::none: return "-";
    case kind::count: return std::to_string(value.count_value);
    case kind::micros: return std::to_string(value.count_value) + " µs";
    case kind::millis: return milliseconds_text(value.micros_value) + " ms";
    case kind::span: return duration_ms_text(value.count_value) + " ms";
    case kind::offset: return signed_micro_text(value.micros_value);
    case kind::text: return value.text_value;
    case kind::flag: return value.flag_value ? "yes" : "no";
  }
  return {};
}

void json_of(json_writer& json, const summary_value& value) {
  using kind = summary_value::kind;
  switch (value.shape) {
    case kind::none: json.null(); break;
    case kind::count:
    case kind::micros:
    case kind::span: json.value(value.count_value); break;
    case kind::millis:
    case kind::offset: json.value(value.micros_value); break;
    case kind::text: json.value(value.text_value); break;
    case kind::flag: json.value(value.flag_value); break;
  }
}

class text_printer final : public summary_printer {
 public:
  explicit text_printer(std::string& out) : out_(out) {}

  void heading(const capture_model& model, std::size_t harvest) override {
    append_format(out_, "kelvra-inspect summary of %s (harvest %zu of %zu)\n",
                  input_label(model.input).c_str(), harvest + 1, model.harvests.size());
  }
  void begin(std::string_view, std::string_view title) override { title_line(title); }
  void end() override {}
  void absent(std::string_view, std::string_view title, std::string_view why) override {
    if (!title.empty()) title_line(title);
    out_ += "  " + std::string(why) + "\n";
  }
  void fact(std::string_view, std::string_view label, const summary_value& value) override {
    out_ += "  " + padded(label, label_width) + text_of(value) + "\n";
  }
  void table(std::string_view, std::span<const summary_column> columns,
             const std::vector<std::vector<summary_value>>& rows) override {
    if (rows.empty()) return;
    std::string line = "  ";
    for (const summary_column& c : columns) line += padded(c.title, c.width);
    trim_end(line);
    for (const std::vector<summary_value>& row : rows) {
      line += "\n  ";
      for (std::size_t i = 0; i < columns.size() && i < row.size(); ++i)
        line += padded(text_of(row[i]), columns[i].width);
      trim_end(line);
    }
    out_ += line + "\n";
  }
  void problems(std::string_view key, std::string_view prefix, std::span<const problem> found) override {
    if (found.empty()) return;
    if (key == "missing") title_line("missing");
    if (key == "damage") append_format(out_, "\ndamage: %zu\n", found.size());
    for (const problem& p : found) {
      out_ += "  ";
      out_ += prefix;
      if (const std::string where = p.where(); key == "damage" && !where.empty()) out_ += where + ": ";
      out_ += problem_text(p);
      if (const std::string_view outcome = problem_outcome(p); !outcome.empty()) out_.append("; ").append(outcome);
      out_ += "\n";
    }
  }
  void runs(const std::vector<sequence_run>& list, bool sources_known) override {
    if (list.empty()) return;
    title_line("sequence numbers");
    for (std::size_t i = 0; i < list.size(); ++i) {
      const sequence_run& run = list[i];
      append_format(out_, "  run %zu from line %llu", i + 1, static_cast<unsigned long long>(run.first_line));
      if (run.source != record_source::unknown) out_ += " (" + std::string(source_name(run.source)) + ")";
      append_format(out_, ": %zu records, numbers %u to %u", run.records, run.lowest, run.highest);
      if (run.lost == 0 && run.repeats.empty() && run.out_of_order == 0) {
        out_ += ", none lost or repeated\n";
        continue;
      }
      append_format(out_, "; %llu lost, %zu repeated, %zu out of order\n",
                    static_cast<unsigned long long>(run.lost), run.repeats.size(), run.out_of_order);
      for (std::size_t g = 0; g < run.gaps.size() && g < listed_at_most; ++g)
        append_format(out_, "    lost %llu after %llu\n", static_cast<unsigned long long>(run.gaps[g].missing),
                      static_cast<unsigned long long>(run.gaps[g].after));
      if (run.gaps.size() > listed_at_most)
        append_format(out_, "    and %zu gaps more\n", run.gaps.size() - listed_at_most);
      for (std::size_t r = 0; r < run.repeats.size() && r < listed_at_most; ++r)
        append_format(out_, "    %u again at line %llu%s\n", run.repeats[r].sequence,
                      static_cast<unsigned long long>(run.repeats[r].line),
                      run.repeats[r].same_bytes ? " (the same record)" : " (a different record)");
      if (run.repeats.size() > listed_at_most)
        append_format(out_, "    and %zu repeats more\n", run.repeats.size() - listed_at_most);
    }
    if (list.size() > 1 && !sources_known)
      out_ += "  (numbering restarts where the second source begins, or where records were "
              "lost in bulk)\n";
  }
  void failures(const std::vector<failure_line>& list) override {
    append_format(out_, "\nfailure lines: %zu\n", list.size());
    for (const failure_line& f : list) {
      append_format(out_, "  line %llu: ", static_cast<unsigned long long>(f.line));
      out_ += f.text + "\n    " + f.meaning + "\n";
    }
  }
  void finish() override {}

 private:
  void title_line(std::string_view title) {
    out_ += "\n";
    out_ += title;
    out_ += "\n";
  }
  static void trim_end(std::string& line) {
    while (!line.empty() && line.back() == ' ') line.pop_back();
  }

  std::string& out_;
};

class json_printer final : public summary_printer {
 public:
  explicit json_printer(std::string& out) : json_(out) {}

  void heading(const capture_model& model, std::size_t harvest) override {
    json_.begin_object();
    json_.key("schema_version").value(std::uint64_t{summary_schema_version});
    json_.key("input").value(model.input);
    json_.key("harvest").value(std::uint64_t{harvest + 1});
    json_.key("harvests").value(std::uint64_t{model.harvests.size()});
    json_.key("damaged").value(model.harvests[harvest].facts.damaged);
  }
  void begin(std::string_view key, std::string_view) override { json_.key(key).begin_object(); }
  void end() override { json_.end_object(); }
  void absent(std::string_view key, std::string_view, std::string_view) override {
    json_.key(key).null();
  }
  void fact(std::string_view key, std::string_view, const summary_value& value) override {
    json_.key(key);
    json_of(json_, value);
  }
  void table(std::string_view key, std::span<const summary_column> columns,
             const std::vector<std::vector<summary_value>>& rows) override {
    json_.key(key).begin_array();
    for (const std::vector<summary_value>& row : rows) {
      json_.begin_object();
      for (std::size_t i = 0; i < columns.size() && i < row.size(); ++i) {
        json_.key(columns[i].key);
        json_of(json_, row[i]);
      }
      json_.end_object();
    }
    json_.end_array();
  }
  void problems(std::string_view key, std::string_view, std::span<const problem> found) override {
    json_.key(key);
    write_problems(json_, found);
  }
  void runs(const std::vector<sequence_run>& list, bool) override {
    json_.key("sequence_runs").begin_array();
    for (const sequence_run& run : list) {
      json_.begin_object();
      json_.key("source");
      write_source(json_, run.source);
      json_.key("first_line").value(run.first_line);
      json_.key("records").value(std::uint64_t{run.records});
      json_.key("lowest").value(run.lowest);
      json_.key("highest").value(run.highest);
      json_.key("lost").value(run.lost);
      json_.key("repeated").value(std::uint64_t{run.repeats.size()});
      json_.key("out_of_order").value(std::uint64_t{run.out_of_order});
      json_.key("gaps").begin_array();
      for (const sequence_gap& g : run.gaps) {
        json_.begin_object();
        json_.key("after").value(g.after);
        json_.key("missing").value(g.missing);
        json_.end_object();
      }
      json_.end_array();
      json_.key("repeats").begin_array();
      for (const sequence_repeat& r : run.repeats) {
        json_.begin_object();
        json_.key("sequence_num").value(r.sequence);
        json_.key("line").value(r.line);
        json_.key("same_record").value(r.same_bytes);
        json_.end_object();
      }
      json_.end_array();
      json_.end_object();
    }
    json_.end_array();
  }
  void failures(const std::vector<failure_line>& list) override {
    json_.key("failures");
    write_failures(json_, list);
  }
  void finish() override { json_.end_object(); }

 private:
  json_writer json_;
};

}  // namespace

std::unique_ptr<summary_printer> text_summary_printer(std::string& out) {
  return std::make_unique<text_printer>(out);
}

std::unique_ptr<summary_printer> json_summary_printer(std::string& out) {
  return std::make_unique<json_printer>(out);
}

}  // namespace inspect
