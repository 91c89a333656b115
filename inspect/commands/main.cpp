// kelvra-inspect: a capture (what kelvra --harvest printed), "prof-event "
// lines or raw records, turned into the collector's lines, JSON Lines, a
// report, a phone that prints the capture again, a trace, a summary or a
// timeline.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <ctime>
#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>

#include <unistd.h>

#include "inspect/capture/zone_rules.h"
#include "inspect/commands/commands.h"
#include "inspect/input/input_forms.h"

namespace {

constexpr const char* statuses =
    "Exit status: 0 when the input was read whole; 1 when it was damaged (cut short, a line "
    "that cannot be read) and everything readable was written, each damage named on standard "
    "error; 2 when nothing could be made of it (not a capture, an unreadable file, bad options).";

// The year a capture's calendar times are taken back in when none is given:
// the one the machine's clock is in, in the capture's zone, and back from it.
int current_year(const inspect::zone_rules& zone) {
  std::tm local{};
  if (!zone.local_time(std::time(nullptr), local)) return 1970;
  return local.tm_year + 1900;
}

struct clock_settings {
  std::string timesync;
  std::optional<int> year;
  std::string zone;
};

void add_zone(CLI::App& command, std::string& zone) {
  command.add_option("--zone", zone,
                     "The IANA time zone the capture's calendar times were printed in, such as "
                     "Asia/Tokyo (default: the one TZ names, or the machine's)");
}

// Null, after one line, for a zone the tz database does not know.
const inspect::zone_rules* known_zone(const std::string& zone) {
  const inspect::zone_rules* rules = inspect::zone_named(zone);
  if (rules == nullptr)
    std::fprintf(stderr, "kelvra-inspect: %s\n", inspect::unknown_zone_text(zone).c_str());
  return rules;
}

void add_clock(CLI::App& command, clock_settings& settings) {
  command.add_option("--timesync", settings.timesync,
                     "The clock pair TMX,CALENDAR (the timesync property's numbers, in ns); "
                     "a capture's own calendar times give it otherwise");
  command.add_option("--year", settings.year,
                     "The year of a capture's first calendar time (default: the latest that "
                     "fits, back from this one)")
      ->check(CLI::Range(1969, 2555));
  add_zone(command, settings.zone);
}

// False, after saying why, when the pair or the zone does not read.
bool finish_clock(const clock_settings& settings, std::optional<zol::timesync_pair>& pair,
                  inspect::year_preference& years, std::string& zone) {
  zone = settings.zone;
  const inspect::zone_rules* rules = known_zone(zone);
  if (rules == nullptr) return false;
  years = {settings.year, current_year(*rules)};
  if (settings.timesync.empty()) return true;
  pair = inspect::parse_timesync(settings.timesync);
  if (pair) return true;
  std::fprintf(stderr, "kelvra-inspect: --timesync wants two integers TMX,CALENDAR, not '%s'\n",
               settings.timesync.c_str());
  return false;
}

// The archive options of every subcommand that reads a capture: the
// member to take (for one capture; none for tables) and the size cap.
void add_archive(CLI::App& command, std::optional<std::string>* member,
                 inspect::archive_limits& limits) {
  if (member != nullptr)
    command.add_option("--member", *member,
                       "Inside an archive, the member that holds the capture (its path in the "
                       "archive), when the archive holds several");
  command.add_option("--max-capture-size", limits.max_capture_size,
                     "A capture inside an archive larger than this is refused (bytes; KiB, MiB, "
                     "GiB too)")
      ->transform(CLI::AsSizeValue(false))
      ->capture_default_str();
}

struct stream_settings {
  inspect::stream_options stream;
  clock_settings clock;
  std::string from;
  bool no_progress = false;
};

void add_stream(CLI::App& command, stream_settings& settings) {
  command.add_option("input", settings.stream.input,
                     "A capture, prof-event lines or raw records; - for standard input; .gz too, "
                     "or an archive holding it")
      ->capture_default_str();
  command.add_option("--from", settings.from, "The input's form, instead of telling it")
      ->check(CLI::IsMember({"harvest", "hex", "raw"}));
  add_archive(command, &settings.stream.member, settings.stream.archive);
  add_clock(command, settings.clock);
  command.add_flag("--no-progress", settings.no_progress,
                   "No progress line on standard error for large inputs");
}

bool finish_stream(stream_settings& settings) {
  if (!settings.from.empty()) settings.stream.form = inspect::form_of_name(settings.from);
  settings.stream.progress = !settings.no_progress;
  return finish_clock(settings.clock, settings.stream.timesync, settings.stream.years,
                      settings.stream.zone);
}

struct whole_settings {
  inspect::capture_settings capture;
  clock_settings clock;
  bool no_progress = false;
};

// Where a single output goes, and the progress line a person waits on.
void add_output(CLI::App& command, std::string& output, bool& no_progress) {
  command.add_option("-o,--output", output, "Where to write it; - for standard output")
      ->capture_default_str();
  command.add_flag("--no-progress", no_progress,
                   "No progress line on standard error for large inputs");
}

void add_whole(CLI::App& command, whole_settings& settings, bool views) {
  command.add_option("capture", settings.capture.input,
                     "What kelvra --harvest printed (standard error merged or not); - for standard "
                     "input; .gz too, or an archive holding it")
      ->capture_default_str();
  add_archive(command, &settings.capture.member, settings.capture.reading.archive);
  add_clock(command, settings.clock);
  add_output(command, settings.capture.output, settings.no_progress);
  if (views)
    command.add_option("--harvest", settings.capture.harvest,
                       "Which harvest of a capture that holds several, from 1")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
}

bool finish_whole(whole_settings& settings) {
  inspect::capture_options& reading = settings.capture.reading;
  if (!settings.no_progress && isatty(fileno(stderr))) reading.progress = stderr;
  return finish_clock(settings.clock, reading.timesync, reading.years, reading.zone);
}

// compare: two captures, a harvest of each, what may differ.
constexpr const char* compare_statuses =
    "Exit status: 0 when the captures agree, 1 when they differ, 2 when either cannot be read "
    "(not a capture, an unreadable file, no such harvest, bad options). A damaged capture is "
    "compared as far as it reads, and the output says so.";

struct compare_cli {
  inspect::compare_settings settings;
  clock_settings clock;
  std::optional<std::size_t> harvest, harvest_a, harvest_b;
  std::optional<std::string> member;
  std::vector<std::string> ignore;
  bool json = false;
  bool html = false;
  bool no_progress = false;
};

void add_compare(CLI::App& command, compare_cli& cli) {
  command.add_option("A", cli.settings.input_a,
                     "The capture compared with (a healthy phone's, last week's, the golden "
                     "unit's); - for standard input; .gz too, or an archive holding it")
      ->required();
  command.add_option("B", cli.settings.input_b,
                     "The capture compared; - for standard input; .gz too, or an archive holding it")
      ->required();
  add_archive(command, &cli.member, cli.settings.reading.archive);
  command.add_option("--member-a", cli.settings.member_a, "The member of A, instead of --member");
  command.add_option("--member-b", cli.settings.member_b, "The member of B, instead of --member");
  add_clock(command, cli.clock);
  add_output(command, cli.settings.output, cli.no_progress);
  for (const auto& [name, value, what] :
       {std::tuple{"--harvest", &cli.harvest, "Which harvest of each capture, from 1 (default 1)"},
        std::tuple{"--harvest-a", &cli.harvest_a, "Which harvest of A, instead of --harvest"},
        std::tuple{"--harvest-b", &cli.harvest_b, "Which harvest of B, instead of --harvest"}})
    command.add_option(name, *value, what)->check(CLI::PositiveNumber);
  command.add_option("--tolerance-us", cli.settings.options.tolerance_us,
                     "Latencies that differ by no more than this many microseconds agree")
      ->capture_default_str();
  std::vector<std::string> parts;
  for (const inspect::compare_part_row& row : inspect::compare_parts) parts.emplace_back(row.key);
  command.add_option("--ignore", cli.ignore, "A part whose differences do not count; repeatable")
      ->check(CLI::IsMember(parts))
      ->allow_extra_args(false);
  CLI::Option* json = command.add_flag("--json", cli.json, "One JSON object instead of text");
  command.add_flag("--html", cli.html, "One self-contained HTML page drawing both presses")
      ->excludes(json);
}

bool finish_compare(compare_cli& cli) {
  inspect::compare_settings& s = cli.settings;
  s.harvest_a = cli.harvest_a.value_or(cli.harvest.value_or(1));
  s.harvest_b = cli.harvest_b.value_or(cli.harvest.value_or(1));
  if (!s.member_a) s.member_a = cli.member;
  if (!s.member_b) s.member_b = cli.member;
  for (const std::string& key : cli.ignore)
    if (const auto part = inspect::part_of_key(key)) s.options.ignore.push_back(*part);
  using form = inspect::compare_settings::form;
  s.shape = cli.json ? form::json : cli.html ? form::page : form::text;
  if (!cli.no_progress && isatty(fileno(stderr))) s.reading.progress = stderr;
  return finish_clock(cli.clock, s.reading.timesync, s.reading.years, s.reading.zone);
}

// gate: two fleets, metric by metric, and a verdict.
constexpr const char* gate_statuses =
    "Exit status: 0 when nothing regressed (every metric same or improved), 1 when something "
    "regressed, 3 when nothing regressed but something is unknown (measure more), 2 when an "
    "input could not be read (or bad options).";

struct gate_cli {
  inspect::gate_settings settings;
  std::optional<int> year;
  std::string zone;
  bool json = false;
  bool html = false;
  bool no_progress = false;
};

void add_gate(CLI::App& command, gate_cli& cli) {
  command.add_option("BASELINE", cli.settings.baseline,
                     "The fleet compared with: a dataset of tables or kelvra-fleet (a folder, "
                     "partitions below it), or captures, archives and folders as tables reads "
                     "them; with --by, the one dataset")
      ->required();
  command.add_option("CANDIDATE", cli.settings.candidate, "The fleet compared, read the same way");
  command.add_option("--by", cli.settings.by,
                     "LABEL=A,B: one dataset split by a label of its harvests (or a LABEL=value "
                     "folder), A the baseline, B the candidate");
  command.add_option("--budget", cli.settings.budgets,
                     "NAME=+2% or NAME=+50us: the change of a metric, or of a family of them, "
                     "too small to matter; repeatable")
      ->allow_extra_args(false);
  command.add_option("--year", cli.year,
                     "For captures: the year of their first calendar times (default: the latest "
                     "that fits, back from this one)")
      ->check(CLI::Range(1969, 2555));
  add_archive(command, nullptr, cli.settings.reading.archive);
  add_zone(command, cli.zone);
  add_output(command, cli.settings.output, cli.no_progress);
  CLI::Option* json = command.add_flag("--json", cli.json, "One JSON object instead of text");
  command.add_flag("--html", cli.html, "One self-contained HTML page drawing both fleets")
      ->excludes(json);
}

// False after saying why: two fleets, or one and --by.
bool finish_gate(gate_cli& cli) {
  inspect::gate_settings& s = cli.settings;
  if (s.by.empty() == s.candidate.empty()) {
    std::fprintf(stderr, "kelvra-inspect gate: give BASELINE and CANDIDATE, or one dataset "
                         "and --by LABEL=A,B\n");
    return false;
  }
  using form = inspect::gate_settings::form;
  s.shape = cli.json ? form::json : cli.html ? form::page : form::text;
  s.progress = !cli.no_progress;
  s.reading.zone = cli.zone;
  const inspect::zone_rules* zone = known_zone(cli.zone);
  if (zone == nullptr) return false;
  s.reading.years = {cli.year, current_year(*zone)};
  return true;
}

// The sheet of --labels, or false after saying where it goes wrong.
bool read_labels(const std::string& path, std::optional<inspect::label_sheet>& sheet) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file.is_open() || file.bad()) {
    std::fprintf(stderr, "%s\n", inspect::fault_line({path, "", "cannot be read"}).c_str());
    return false;
  }
  inspect::sheet_problem problem;
  sheet.emplace();
  if (inspect::read_label_sheet(text.str(), *sheet, problem)) return true;
  std::fprintf(stderr, "kelvra-inspect: %s: %s\n", path.c_str(),
               inspect::sheet_problem_text(problem).c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Turns what kelvra --harvest printed into data.", "kelvra-inspect"};
  app.set_version_flag("--version", std::string(KELVRA_VERSION));
  app.require_subcommand(1);
  app.footer(statuses);

  stream_settings decode_settings;
  bool hex = false;
  CLI::App* decode = app.add_subcommand(
      "decode", "The lines the collector prints for the records, byte for byte");
  add_stream(*decode, decode_settings);
  decode->add_flag("--hex", hex, "The raw form instead: \"prof-event \" and 96 hex digits");

  stream_settings records_settings;
  CLI::App* records = app.add_subcommand(
      "records", "One JSON object per record (JSON Lines), for DuckDB, Spark, jq");
  add_stream(*records, records_settings);

  whole_settings phone_settings;
  std::string phone_additions;
  bool partial = false;
  CLI::App* phone = app.add_subcommand(
      "phone", "A phone description that, harvested under the same TZ (--zone's), prints the capture again");
  add_whole(*phone, phone_settings, false);
  phone->add_option("--with", phone_additions,
                    "A description of what the capture cannot show (service ids and other "
                    "properties, services and commands the harvest does not ask for), added to "
                    "the phone; the capture's own items stand");
  phone->add_flag("--partial", partial,
                  "For a damaged capture, the phone of its readable part (saying what it "
                  "assumes) instead of a refusal");

  whole_settings report_settings;
  CLI::App* report = app.add_subcommand("report", "The whole capture as one JSON document");
  add_whole(*report, report_settings, false);

  whole_settings trace_settings;
  CLI::App* trace = app.add_subcommand(
      "trace", "Trace Event JSON of the capture, for the web-based trace viewers");
  add_whole(*trace, trace_settings, true);

  whole_settings summary_settings;
  bool summary_json = false;
  CLI::App* summary = app.add_subcommand(
      "summary", "The press, its latencies, the records, lost records and failure lines");
  add_whole(*summary, summary_settings, true);
  summary->add_flag("--json", summary_json, "The same as one JSON object");

  whole_settings timeline_settings;
  CLI::App* timeline = app.add_subcommand(
      "timeline", "One self-contained HTML page drawing the press and the records");
  add_whole(*timeline, timeline_settings, true);

  compare_cli compare_settings;
  CLI::App* compare = app.add_subcommand(
      "compare", "Two captures side by side: what differs, and a status for a gate");
  add_compare(*compare, compare_settings);

  inspect::tables_settings tables_settings;
  std::optional<int> tables_year;
  CLI::App* tables = app.add_subcommand(
      "tables", "Many captures into JSON Lines tables for DuckDB, Spark, BigQuery: harvests, "
                "records, failures and unreadable inputs");
  tables->add_option("inputs", tables_settings.inputs,
                     "Captures (.gz too), archives of them and directories, searched recursively");
  add_archive(*tables, nullptr, tables_settings.reading.archive);
  std::string labels;
  tables->add_option("--labels", labels,
                     "A CSV sheet of labels: a header row, the first column capture (the path "
                     "as given) or capture_sha256, the others labels the harvests table carries");
  tables->add_option("--out", tables_settings.out, "The directory the tables are written into");
  tables->add_option("--files-from", tables_settings.files_from,
                     "A list of inputs, one a line; - for standard input");
  tables->add_option("--jobs", tables_settings.jobs, "Captures read at once")
      ->default_val(std::max(1u, std::thread::hardware_concurrency()))
      ->check(CLI::Range(1, 256));
  tables->add_flag("--gzip", tables_settings.gzip, "The tables gzip-compressed (.jsonl.gz)");
  tables->add_flag("--list", tables_settings.list,
                   "Print the files it would read, one a line, and stop");
  tables->add_option("--partition-by", tables_settings.partition_by,
                     "A label: the tables in a folder per its value, LABEL=VALUE (Hive-style)");
  tables->add_option("--year", tables_year,
                     "The year of the captures' first calendar times (default: the latest that "
                     "fits, back from this one)")
      ->check(CLI::Range(1969, 2555));
  add_zone(*tables, tables_settings.reading.zone);
  bool tables_quiet = false;
  tables->add_flag("--no-progress", tables_quiet, "No progress line on standard error");

  gate_cli gate_settings;
  CLI::App* gate = app.add_subcommand(
      "gate", "Did the candidate regress? Two fleets compared metric by metric, with statistics");
  add_gate(*gate, gate_settings);

  for (CLI::App* command : app.get_subcommands({})) command->footer(statuses);
  compare->footer(compare_statuses);
  gate->footer(gate_statuses);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int status = app.exit(error);
    return status == 0 ? 0 : 2;
  }

  if (decode->parsed()) {
    if (!finish_stream(decode_settings)) return 2;
    return inspect::run_decode(decode_settings.stream, hex);
  }
  if (records->parsed()) {
    if (!finish_stream(records_settings)) return 2;
    return inspect::run_records(records_settings.stream);
  }
  for (const auto& [command, settings, view] :
       {std::tuple{trace, &trace_settings, inspect::capture_view::trace},
        std::tuple{summary, &summary_settings,
                   summary_json ? inspect::capture_view::summary_json
                                : inspect::capture_view::summary},
        std::tuple{timeline, &timeline_settings, inspect::capture_view::timeline}}) {
    if (!command->parsed()) continue;
    if (!finish_whole(*settings)) return 2;
    return inspect::run_capture_view(settings->capture, view);
  }
  if (tables->parsed()) {
    if (tables_settings.out.empty() && !tables_settings.list) {
      std::fprintf(stderr, "kelvra-inspect tables: --out names the tables' directory\n");
      return 2;
    }
    const inspect::zone_rules* zone = known_zone(tables_settings.reading.zone);
    if (zone == nullptr) return 2;
    tables_settings.reading.years = {tables_year, current_year(*zone)};
    if (!labels.empty() && !read_labels(labels, tables_settings.labels)) return 2;
    tables_settings.progress = !tables_quiet;
    return inspect::run_tables(tables_settings);
  }
  if (compare->parsed()) {
    if (!finish_compare(compare_settings)) return 2;
    return inspect::run_compare(compare_settings.settings);
  }
  if (gate->parsed()) {
    if (!finish_gate(gate_settings)) return 2;
    return inspect::run_gate(gate_settings.settings);
  }
  if (phone->parsed()) {
    if (!finish_whole(phone_settings)) return 2;
    return inspect::run_phone(phone_settings.capture, phone_additions, partial);
  }
  if (!finish_whole(report_settings)) return 2;
  return inspect::run_report(report_settings.capture);
}
