// tables: many captures into the fleet's tables, read on several threads
// and written in input order, whatever the number of jobs.

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <thread>

#include "inspect/commands/commands.h"
#include "inspect/input/content_hash.h"
#include "inspect/input/progress_meter.h"
#include "inspect/outputs/dataset_writer.h"
#include "inspect/outputs/table_rows.h"

namespace inspect {
namespace {

namespace fs = std::filesystem;

bool read_list(const std::string& list, std::vector<std::string>& inputs) {
  std::ifstream file;
  std::istream* in = &std::cin;
  if (list != "-") {
    file.open(list);
    if (!file.is_open()) {
      std::fprintf(stderr, "kelvra-inspect: %s: cannot be opened\n", list.c_str());
      return false;
    }
    in = &file;
  }
  for (std::string line; std::getline(*in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) inputs.push_back(line);
  }
  return true;
}

void say(capture_rows& result, const std::string& line) {
  result.said += line;
  result.said += '\n';
}

// The labels of a capture, and the zone it is read in when they give one.
const std::vector<std::string>* labels_of(const label_sheet* sheet, const std::string& path,
                                          const std::string& sha256) {
  return sheet != nullptr ? sheet->find(path, sha256) : nullptr;
}

std::string zone_of(const label_sheet* sheet, const std::vector<std::string>* labels,
                    const std::string& otherwise) {
  if (labels == nullptr) return otherwise;
  const std::optional<std::size_t> column = sheet->column("zone");
  return column && !(*labels)[*column].empty() ? (*labels)[*column] : otherwise;
}

// One capture of the input: its model read from `source`, hashed.
bool read_model(std::unique_ptr<byte_source> source, const found_capture& capture,
                const capture_options& options, capture_model& model, std::string& sha256,
                input_fault& fault) {
  content_hash hash;
  const bool read = read_capture(hashing(std::move(source), hash), capture.label, options, model, fault);
  sha256 = hash.hex();
  return read;
}

}  // namespace

capture_rows read_capture_rows(const std::string& path, const capture_options& reading,
                               const label_sheet* sheet, std::string_view partition_by) {
  capture_rows result;
  capture_options options = reading;
  options.messages = nullptr;
  options.progress = nullptr;
  input_captures captures(path, reading.archive, whole_forms);
  input_fault fault;
  if (!captures.open(fault)) {
    add_unreadable_row({path, ""}, fault, result.rows);
    say(result, fault_line(fault));
    result.damaged = true;
    result.counts.unreadable = 1;
    return result;
  }
  const bool by_path = sheet == nullptr || !sheet->by_sha256;
  for (found_capture capture; captures.next(capture);) {
    const std::vector<std::string>* labels = by_path ? labels_of(sheet, path, "") : nullptr;
    options.zone = zone_of(sheet, labels, reading.zone);
    capture_model model;
    std::string sha256;
    bool read = read_model(std::move(capture.source), capture, options, model, sha256, fault);
    if (!by_path) {
      labels = labels_of(sheet, path, sha256);
      // Known by its hash only once read: read again in the zone its labels give.
      if (const std::string zone = zone_of(sheet, labels, reading.zone); read && zone != options.zone) {
        options.zone = zone;
        input_captures again(path, reading.archive, whole_forms);
        found_capture same;
        again.choose({std::nullopt, capture.ordinal});
        read = again.open(fault) && again.next(same) &&
               read_model(std::move(same.source), same, options, model, sha256, fault);
      }
    }
    // A capture the walk refused is told with the walk's problems.
    if (captures.refused()) continue;
    const std::optional<std::string_view> member =
        capture.member ? std::optional<std::string_view>(*capture.member) : std::nullopt;
    capture_identity id{path, sha256, member};
    if (sheet != nullptr) {
      id.label_names = sheet->columns;
      id.labels = labels;
    }
    if (labels != nullptr && !result.partition_value)
      if (const std::optional<std::size_t> column = sheet->column(partition_by))
        result.partition_value = (*labels)[*column];
    if (!read) {
      add_unreadable_row(id, fault, result.rows);
      say(result, fault_line(fault));
      result.damaged = true;
      ++result.counts.unreadable;
      continue;
    }
    add_capture_rows(model, id, result.rows);
    ++(model.lost ? result.counts.damaged : result.counts.read_whole);
    if (model.lost) {
      result.damaged = true;
      const auto lost = std::count_if(model.damage.begin(), model.damage.end(),
                                      [](const problem& d) { return loses_input(d); });
      say(result, "kelvra-inspect: " + input_label(capture.label) + ": damaged in " +
                      std::to_string(lost) + " place" + (lost == 1 ? "" : "s") +
                      " (the harvests table says where)");
    }
  }
  for (const member_problem& problem : captures.problems()) {
    const input_fault row{path, problem.after.empty() ? "" : "after " + problem.after,
                          problem_text(problem)};
    const std::optional<std::string_view> member =
        problem.member.empty() ? std::nullopt : std::optional<std::string_view>(problem.member);
    add_unreadable_row({path, "", member}, row, result.rows);
    say(result, fault_line({member ? member_label(path, problem.member) : path, row.where, row.fault}));
    result.damaged = true;
    ++result.counts.unreadable;
  }
  result.counts.members_passed_over = captures.passed_over();
  return result;
}

bool expand_inputs(const std::vector<std::string>& inputs, std::vector<std::string>& files) {
  for (const std::string& input : inputs) {
    std::error_code error;
    if (input != "-" && fs::is_directory(input, error)) {
      std::vector<std::string> found;
      for (auto it = fs::recursive_directory_iterator(input, error);
           !error && it != fs::recursive_directory_iterator(); it.increment(error))
        if (it->is_regular_file(error)) found.push_back(it->path().string());
      if (error) {
        std::fprintf(stderr, "kelvra-inspect: %s: %s\n", input.c_str(), error.message().c_str());
        return false;
      }
      std::sort(found.begin(), found.end());
      files.insert(files.end(), found.begin(), found.end());
    } else {
      files.push_back(input);
    }
  }
  return true;
}

int run_tables(const tables_settings& settings) {
  std::vector<std::string> inputs = settings.inputs;
  if (!settings.files_from.empty() && !read_list(settings.files_from, inputs)) return 2;
  std::vector<std::string> files;
  if (!expand_inputs(inputs, files)) return 2;
  if (settings.list) {
    for (const std::string& file : files) std::printf("%s\n", file.c_str());
    return std::fflush(stdout) == 0 ? 0 : 2;
  }

  std::error_code error;
  fs::create_directories(settings.out, error);
  // A manifest from an earlier run must not vouch for these files.
  fs::remove(fs::path(settings.out) / "manifest.json", error);
  dataset_writer tables(settings.out, settings.gzip, settings.partition_by.empty());
  if (!tables.fault().empty()) {
    std::fprintf(stderr, "kelvra-inspect: %s: cannot be written\n", tables.fault().c_str());
    return 2;
  }
  input_counts counts;
  counts.listed = files.size();

  // Each job reads the next capture, then waits for its turn to write: the
  // rows stay in input order, and no job holds more than the one capture it
  // read, however many there are.
  const std::size_t jobs = std::max<std::size_t>(1, std::min(settings.jobs, files.size()));
  std::mutex claim, turn;
  std::condition_variable turned;
  std::size_t next = 0, written = 0;
  std::optional<progress_meter> meter;
  if (settings.progress && isatty(fileno(stderr)))
    meter.emplace("captures", stderr, progress_meter::clock::now());
  bool damaged = false, write_failed = false;
  const auto work = [&] {
    for (;;) {
      std::size_t index = 0;
      {
        std::lock_guard<std::mutex> held(claim);
        if (next >= files.size()) return;
        index = next++;
      }
      const capture_rows result =
          read_capture_rows(files[index], settings.reading, settings.labels ? &*settings.labels : nullptr,
                            settings.partition_by);
      std::unique_lock<std::mutex> held(turn);
      turned.wait(held, [&] { return written == index; });
      damaged = damaged || result.damaged;
      counts += result.counts;
      if (!result.said.empty()) {
        if (meter) meter->clear();
        std::fputs(result.said.c_str(), stderr);
      }
      const std::string folder =
          settings.partition_by.empty()
              ? std::string()
              : hive_folder(settings.partition_by, result.partition_value);
      write_failed = !tables.write(folder, {result.rows.harvests, result.rows.records,
                                            result.rows.failures, result.rows.unreadable}) ||
                     write_failed;
      ++written;
      if (meter && meter->due(progress_meter::clock::now()))
        meter->update_count(written, files.size(), progress_meter::clock::now());
      held.unlock();
      turned.notify_all();
    }
  };
  std::vector<std::thread> workers;
  for (std::size_t j = 1; j < jobs; ++j) workers.emplace_back(work);
  work();
  for (std::thread& worker : workers) worker.join();
  if (meter) meter->clear();
  if (counts.members_passed_over != 0)
    std::fprintf(stderr, "kelvra-inspect: %llu archive member%s held no capture: passed over\n",
                 static_cast<unsigned long long>(counts.members_passed_over),
                 counts.members_passed_over == 1 ? "" : "s");
  dataset_manifest manifest{"kelvra-inspect", KELVRA_VERSION, counts, settings.partition_by, {}};
  write_failed = !tables.close(manifest.files) || write_failed;
  if (write_failed || !write_manifest(settings.out, manifest)) {
    std::fprintf(stderr, "kelvra-inspect: %s: the tables could not be written whole\n",
                 (write_failed ? tables.fault() : settings.out).c_str());
    return 2;
  }
  return damaged ? 1 : 0;
}

}  // namespace inspect
