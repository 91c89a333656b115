#pragma once

// The subcommands of kelvra-inspect; each returns the exit status: 0 when
// the input was read whole, 1 when it was damaged and everything readable
// was written, 2 when nothing could be made of it.

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "inspect/capture/capture_reader.h"
#include "inspect/capture/record_stream.h"
#include "inspect/compare/comparison.h"
#include "inspect/outputs/dataset_manifest.h"
#include "inspect/outputs/table_rows.h"

namespace inspect {

// The collector's lines for the records, or with `hex` its "prof-event " lines.
int run_decode(const stream_options& options, bool hex);

// One JSON object per record (JSON Lines).
int run_records(const stream_options& options);

// What the whole-capture subcommands are given.
struct capture_settings {
  std::string input = "-";
  capture_options reading;
  std::string output = "-";
  std::size_t harvest = 1;  // the views': which harvest, from 1
};

// The views of a whole capture: Trace Event JSON, a summary as text or
// JSON, an HTML timeline.
enum class capture_view { trace, summary, summary_json, timeline };
int run_capture_view(const capture_settings& settings, capture_view view);

// A phone description that prints the capture again. `additions`, when not
// empty, names a description of what the capture cannot show; `partial`
// writes the phone of a damaged capture's readable part.
int run_phone(const capture_settings& settings, const std::string& additions, bool partial);

// The whole capture as one JSON document.
int run_report(const capture_settings& settings);

// Two captures compared; its own statuses: 0 when they agree, 1 when they
// differ, 2 when either cannot be read (or the output cannot be written).
struct compare_settings {
  std::string input_a;
  std::string input_b;
  capture_options reading;
  std::string output = "-";
  std::size_t harvest_a = 1;  // from 1
  std::size_t harvest_b = 1;
  compare_options options;
  enum class form { text, json, page } shape = form::text;
};
int run_compare(const compare_settings& settings);

// Many captures into the fleet's tables.
struct tables_settings {
  std::vector<std::string> inputs;  // files and directories
  std::string files_from;           // a list of them, one a line; "-": standard input
  std::string out;                  // the tables' directory
  capture_options reading;
  std::size_t jobs = 1;
  bool gzip = false;
  bool list = false;                // print the files it would read, and stop
  bool progress = true;
  std::string partition_by;  // a label: Hive-style folders by its value
  // Each input's labels, by its path as given.
  std::map<std::string, std::map<std::string, std::string, std::less<>>, std::less<>> labels;
};
int run_tables(const tables_settings& settings);

// What one capture gives the tables: its rows, and what to say of it.
struct capture_rows {
  table_rows rows;
  std::string said;  // a line for standard error, or empty
  bool damaged = false;
  input_counts counts;  // for the manifest
};
capture_rows read_capture_rows(const std::string& path, const capture_options& reading);

// Directories searched recursively, their files in name order; false after
// a line on standard error when one cannot be searched.
bool expand_inputs(const std::vector<std::string>& inputs, std::vector<std::string>& files);

// Two fleets compared metric by metric: 0 nothing regressed, 1 something
// regressed, 3 nothing regressed but something is unknown, 2 an input could
// not be read.
struct gate_settings {
  std::string baseline;
  std::string candidate;        // empty with `by`
  std::string by;               // "build=A,B": one dataset split by a label
  std::vector<std::string> budgets;  // NAME=+2%, NAME=+50us
  capture_options reading;
  std::string output = "-";
  enum class form { text, json, page } shape = form::text;
  bool progress = true;
};
int run_gate(const gate_settings& settings);

}  // namespace inspect
