// kelvra-inspect: a capture (what kelvra --harvest printed), "prof-event "
// lines or raw records, turned into the collector's lines or JSON Lines.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>
#include <tuple>

#include "inspect/commands.h"

namespace {

struct common_settings {
  inspect::stream_options stream;
  std::string from;
  std::string timesync;
  bool no_progress = false;
};

void add_common(CLI::App& command, common_settings& settings) {
  command.add_option("input", settings.stream.input,
                     "A capture, prof-event lines or raw records; - for standard input; .gz too")
      ->capture_default_str();
  command.add_option("--from", settings.from, "The input's form, instead of detecting it")
      ->check(CLI::IsMember({"harvest", "hex", "raw"}));
  command.add_option("--timesync", settings.timesync,
                     "The clock pair TMX,CALENDAR (the timesync property's numbers, in ns); "
                     "a capture's own calendar times give it otherwise");
  command.add_option("--year", settings.stream.year,
                     "The year of a capture's calendar times (default: the latest that fits, "
                     "back from this one)")
      ->check(CLI::Range(1971, 9999));
  command.add_flag("--no-progress", settings.no_progress,
                   "No progress line on standard error for large inputs");
}

// False, after saying why, when the settings do not hold together.
bool finish_settings(common_settings& settings) {
  if (!settings.from.empty()) settings.stream.form = inspect::form_of_name(settings.from);
  if (!settings.timesync.empty()) {
    settings.stream.timesync = inspect::parse_timesync(settings.timesync);
    if (!settings.stream.timesync) {
      std::fprintf(stderr,
                   "kelvra-inspect: --timesync wants two integers TMX,CALENDAR, not '%s'\n",
                   settings.timesync.c_str());
      return false;
    }
  }
  settings.stream.progress = !settings.no_progress;
  return true;
}

void add_capture_options(CLI::App& command, inspect::capture_settings& settings) {
  command.add_option("capture", settings.input,
                     "What kelvra --harvest printed (standard error merged or not); - for standard "
                     "input; .gz too")
      ->capture_default_str();
  command.add_option("--year", settings.year,
                     "The year of the capture's calendar times (default: the latest that fits, "
                     "back from this one)")
      ->check(CLI::Range(1971, 9999));
  command.add_option("-o,--output", settings.output, "Where to write it; - for standard output")
      ->capture_default_str();
}

// The views of a whole capture: its input, clock and harvest.
struct view_settings {
  common_settings common;
  std::size_t harvest = 1;
};

void add_view_options(CLI::App& command, view_settings& settings) {
  command.add_option("capture", settings.common.stream.input,
                     "What kelvra --harvest printed (standard error merged or not); - for standard "
                     "input; .gz too")
      ->capture_default_str();
  command.add_option("--timesync", settings.common.timesync,
                     "The clock pair TMX,CALENDAR (the timesync property's numbers, in ns); "
                     "the capture's own calendar times give it otherwise");
  command.add_option("--year", settings.common.stream.year,
                     "The year of the capture's calendar times (default: the latest that fits, "
                     "back from this one)")
      ->check(CLI::Range(1971, 9999));
  command.add_option("--harvest", settings.harvest,
                     "Which harvest of a capture that holds several, from 1")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Turns what kelvra --harvest printed into data.", "kelvra-inspect"};
  app.set_version_flag("--version", std::string(KELVRA_VERSION));
  app.require_subcommand(1);

  common_settings decode_settings;
  bool hex = false;
  CLI::App* decode = app.add_subcommand(
      "decode", "The lines the collector prints for the records, byte for byte");
  add_common(*decode, decode_settings);
  decode->add_flag("--hex", hex, "The raw form instead: \"prof-event \" and 96 hex digits");

  common_settings records_settings;
  CLI::App* records = app.add_subcommand(
      "records", "One JSON object per record (JSON Lines), for DuckDB, Spark, jq");
  add_common(*records, records_settings);

  inspect::capture_settings phone_settings;
  CLI::App* phone = app.add_subcommand(
      "phone", "A phone description that, harvested under the same TZ, prints the capture again");
  add_capture_options(*phone, phone_settings);
  std::string phone_additions;
  phone->add_option("--with", phone_additions,
                    "A description of what the capture cannot show (service ids and other "
                    "properties, services and commands the harvest does not ask for), added to "
                    "the phone; the capture's own items stand");

  inspect::capture_settings report_settings;
  CLI::App* report = app.add_subcommand("report", "The whole capture as one JSON document");
  add_capture_options(*report, report_settings);

  view_settings trace_settings;
  CLI::App* trace = app.add_subcommand(
      "trace", "Trace Event JSON of the capture, for the web-based trace viewers");
  add_view_options(*trace, trace_settings);

  view_settings summary_settings;
  bool summary_json = false;
  CLI::App* summary = app.add_subcommand(
      "summary", "The press, its latencies, the records, lost records and failure lines");
  add_view_options(*summary, summary_settings);
  summary->add_flag("--json", summary_json, "The same as one JSON object");

  view_settings timeline_settings;
  CLI::App* timeline = app.add_subcommand(
      "timeline", "One self-contained HTML page drawing the press and the records");
  add_view_options(*timeline, timeline_settings);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int status = app.exit(error);
    return status == 0 ? 0 : 2;
  }

  if (decode->parsed()) {
    if (!finish_settings(decode_settings)) return 2;
    return inspect::run_decode(decode_settings.stream, hex);
  }
  for (const auto& [command, settings, view] :
       {std::tuple{trace, &trace_settings, inspect::capture_view::trace},
        std::tuple{summary, &summary_settings,
                   summary_json ? inspect::capture_view::summary_json
                                : inspect::capture_view::summary},
        std::tuple{timeline, &timeline_settings, inspect::capture_view::timeline}}) {
    if (!command->parsed()) continue;
    if (!finish_settings(settings->common)) return 2;
    return inspect::run_capture_view(settings->common.stream, view, settings->harvest);
  }
  if (phone->parsed()) return inspect::run_phone(phone_settings, phone_additions);
  if (report->parsed()) return inspect::run_report(report_settings);
  if (!finish_settings(records_settings)) return 2;
  return inspect::run_records(records_settings.stream);
}
