// kelvra-inspect gate: two fleets (datasets, or captures read into the same
// rows on the fly) compared metric by metric; the verdict's status.

#include <unistd.h>

#include <cstdio>
#include <optional>
#include <string>

#include "inspect/commands/commands.h"
#include "inspect/gate/dataset_files.h"
#include "inspect/gate/gate_outputs.h"
#include "inspect/input/progress_meter.h"
#include "inspect/outputs/output_buffer.h"

namespace inspect {
namespace {

constexpr int unreadable_status = 2;

constexpr const char* fault_words[] = {"not JSON", "not a row of the table",
                                       "no such harvest in its harvests table"};
constexpr const char* table_words[] = {"harvests", "failures", "unreadable"};

// Each line of a table's rows into the builder.
void add_rows(gate::sample_builder& builder, gate::table_kind table, std::string_view rows,
              const gate::row_place& place) {
  std::uint64_t number = 0;
  for (std::size_t start = 0, end; start < rows.size(); start = end + 1) {
    end = rows.find('\n', start);
    if (end == std::string_view::npos) end = rows.size();
    builder.add_row(table, rows.substr(start, end - start), place, ++number);
  }
}

// Captures, archives and folders as `tables` reads them, their rows made
// here. What each damaged capture lost is said on standard error.
bool read_captures(const std::string& input, int side, const gate_settings& settings,
                   gate::sample_builder& builder) {
  std::vector<std::string> files;
  if (!expand_inputs({input}, files)) return false;
  std::optional<progress_meter> meter;
  if (settings.progress && isatty(fileno(stderr)))
    meter.emplace(input_label(input), stderr, progress_meter::clock::now());
  gate::row_place place;
  place.side = side;
  for (std::size_t f = 0; f < files.size(); ++f) {
    const capture_rows read = read_capture_rows(files[f], settings.reading);
    if (!read.said.empty()) {
      if (meter) meter->clear();
      std::fprintf(stderr, "%s\n", read.said.c_str());
    }
    add_rows(builder, gate::table_kind::harvests, read.rows.harvests, place);
    add_rows(builder, gate::table_kind::failures, read.rows.failures, place);
    add_rows(builder, gate::table_kind::unreadable, read.rows.unreadable, place);
    if (meter && meter->due(progress_meter::clock::now()))
      meter->update_count(f + 1, files.size(), progress_meter::clock::now());
  }
  return true;
}

bool read_side(const std::string& input, int side, const gate_settings& settings,
               gate::sample_builder& builder) {
  if (access(input.c_str(), R_OK) != 0) {
    std::fprintf(stderr, "kelvra-inspect: %s: cannot be read\n", input.c_str());
    return false;
  }
  if (!gate::is_dataset(input)) return read_captures(input, side, settings, builder);
  std::string fault;
  if (gate::read_dataset(input, side, builder, fault)) return true;
  std::fprintf(stderr, "kelvra-inspect: %s\n", fault.c_str());
  return false;
}

}  // namespace

int run_gate(const gate_settings& settings) {
  std::vector<gate::budget_setting> budgets;
  for (const std::string& text : settings.budgets) {
    std::string why;
    const auto budget = gate::parse_budget(text, why);
    if (!budget) {
      std::fprintf(stderr, "kelvra-inspect gate: %s\n", why.c_str());
      return unreadable_status;
    }
    budgets.push_back(*budget);
  }
  std::optional<gate::label_split> split;
  if (!settings.by.empty()) {
    split = gate::parse_split(settings.by);
    if (!split) {
      std::fprintf(stderr, "kelvra-inspect gate: --by wants LABEL=BASELINE,CANDIDATE, not '%s'\n",
                   settings.by.c_str());
      return unreadable_status;
    }
  }
  gate::sample_builder builder(split);
  if (split) {
    if (!read_side(settings.baseline, -1, settings, builder)) return unreadable_status;
  } else if (!read_side(settings.baseline, 0, settings, builder) ||
             !read_side(settings.candidate, 1, settings, builder)) {
    return unreadable_status;
  }
  for (const gate::row_fault& fault : builder.faults())
    std::fprintf(stderr, "kelvra-inspect: %s: %s table, line %llu: %s\n", fault.group.c_str(),
                 table_words[static_cast<int>(fault.table)],
                 static_cast<unsigned long long>(fault.line),
                 fault_words[static_cast<int>(fault.what)]);
  std::array<gate::side_samples, 2> sides = builder.finish();
  std::array<gate::side_summary, 2> summaries;
  for (std::size_t s = 0; s < 2; ++s) {
    summaries[s].source = split ? settings.baseline + " (" + split->key + "=" + split->values[s] + ")"
                                : s == 0 ? settings.baseline : settings.candidate;
    summaries[s].harvests = sides[s].harvests;
    summaries[s].captures = sides[s].captures;
    if (sides[s].harvests == 0) {
      std::fprintf(stderr, "kelvra-inspect gate: %s: no harvest to compare\n",
                   summaries[s].source.c_str());
      return unreadable_status;
    }
  }
  const gate::gate_report report = gate::judge(sides, budgets);
  const gate::gate_document document{report, summaries[0], summaries[1]};
  std::string text;
  switch (settings.shape) {
    case gate_settings::form::text: gate::write_text(document, text); break;
    case gate_settings::form::json: gate::write_json(document, text); break;
    case gate_settings::form::page: gate::write_page(document, text); break;
  }
  if (write_output(settings.output, text) != 0) return unreadable_status;
  return gate::exit_status(report.verdict);
}

}  // namespace inspect
