#pragma once

// The subcommands of kelvra-inspect; each returns the exit status: 0 when
// the input was read whole, 1 when it was damaged and everything readable
// was written, 2 when nothing could be made of it.

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "inspect/capture/capture_reader.h"
#include "inspect/capture/record_stream.h"
#include "inspect/compare/comparison.h"
#include "inspect/outputs/dataset_manifest.h"
#include "inspect/input/input_captures.h"
#include "inspect/input/label_sheet.h"
#include "inspect/outputs/table_rows.h"

namespace inspect {

// The one capture a single-capture subcommand reads, and the archive it
// may come from.
struct single_input {
  std::string path;
  std::unique_ptr<input_captures> captures;
  found_capture capture;  // its source reads from `captures`
  std::size_t told = 0;   // of the walk's problems
  bool lost = false;
};

// What a capture may be inside an archive, for the stream subcommands and
// for those that read a harvest capture whole.
inline constexpr input_form stream_forms[] = {input_form::harvest, input_form::hex};
inline constexpr input_form whole_forms[] = {input_form::harvest};

// False after the fault line (status 2): the input cannot be opened, or
// the archive holds no capture or several and `member` names none.
bool open_single(const std::string& path, const std::optional<std::string>& member,
                 const archive_limits& limits, std::span<const input_form> forms,
                 single_input& input);
// After the capture was read with `status`: what the walk passed over or
// met told, the status raised for it; 2 when the walk refused the capture.
int finish_single(single_input& input, int status);

// The collector's lines for the records, or with `hex` its "prof-event " lines.
int run_decode(const stream_options& options, bool hex);

// One JSON object per record (JSON Lines).
int run_records(const stream_options& options);

// What the whole-capture subcommands are given.
struct capture_settings {
  std::string input = "-";
  std::optional<std::string> member;  // inside an archive
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
  std::optional<std::string> member_a, member_b;  // inside archives
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
  std::string partition_by;            // a label: Hive-style folders by its value
  std::optional<label_sheet> labels;  // --labels
};
int run_tables(const tables_settings& settings);

// What one input gives the tables: the rows of its captures (an archive's
// each, labelled from `sheet` when there is one), a row for each member
// passed over for what it is, and what to say of it.
struct capture_rows {
  table_rows rows;
  std::string said;  // lines for standard error, or empty
  bool damaged = false;
  input_counts counts;  // for the manifest; its members passed over too
  // The value of the --partition-by label of the input's first capture.
  std::optional<std::string> partition_value;
};
// `partition_by` names the label whose value the rows are filed under.
capture_rows read_capture_rows(const std::string& path, const capture_options& reading,
                               const label_sheet* sheet = nullptr, std::string_view partition_by = {});

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
