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

// The value of the --partition-by label for one input, if its labels give it.
std::optional<std::string_view> label_value(const tables_settings& settings, const std::string& path) {
  const auto labels = settings.labels.find(path);
  if (labels == settings.labels.end()) return std::nullopt;
  const auto value = labels->second.find(settings.partition_by);
  if (value == labels->second.end()) return std::nullopt;
  return value->second;
}

}  // namespace

capture_rows read_capture_rows(const std::string& path, const capture_options& reading) {
  capture_rows result;
  content_hash hash;
  input_fault fault;
  std::unique_ptr<byte_source> source = open_file(path, fault);
  capture_model model;
  capture_options options = reading;
  options.messages = nullptr;
  options.progress = nullptr;
  const bool read =
      source && read_capture(hashing(std::move(source), hash), path, options, model, fault);
  const std::string sha256 = hash.hex();
  const capture_identity id{path, sha256};
  if (!read) {
    add_unreadable_row(id, fault, result.rows);
    result.said = fault_line(fault);
    result.damaged = true;
    result.counts.unreadable = 1;
    return result;
  }
  add_capture_rows(model, id, result.rows);
  (model.lost ? result.counts.damaged : result.counts.read_whole) = 1;
  if (model.lost) {
    result.damaged = true;
    const auto lost = std::count_if(model.damage.begin(), model.damage.end(),
                                    [](const problem& d) { return loses_input(d); });
    result.said = "kelvra-inspect: " + input_label(path) + ": damaged in " + std::to_string(lost) +
                  " place" + (lost == 1 ? "" : "s") + " (the harvests table says where)";
  }
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
      const capture_rows result = read_capture_rows(files[index], settings.reading);
      std::unique_lock<std::mutex> held(turn);
      turned.wait(held, [&] { return written == index; });
      damaged = damaged || result.damaged;
      counts += result.counts;
      if (!result.said.empty()) {
        if (meter) meter->clear();
        std::fprintf(stderr, "%s\n", result.said.c_str());
      }
      const std::string folder =
          settings.partition_by.empty()
              ? std::string()
              : hive_folder(settings.partition_by, label_value(settings, files[index]));
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
