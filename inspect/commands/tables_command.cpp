// tables: many captures into the fleet's tables, read on several threads
// and written in input order, whatever the number of jobs.

#include <unistd.h>
#include <zlib.h>

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
#include "inspect/outputs/table_rows.h"

namespace inspect {
namespace {

namespace fs = std::filesystem;

// One table's file, plain or gzip.
class table_file {
 public:
  bool open(const fs::path& path, bool gzip) {
    if (gzip) {
      gz_ = gzopen(path.c_str(), "wb6");
      return gz_ != nullptr && gzbuffer(gz_, 256 * 1024) == 0;
    }
    plain_ = std::fopen(path.c_str(), "wb");
    return plain_ != nullptr;
  }
  bool write(std::string_view text) {
    if (text.empty()) return true;
    if (gz_ != nullptr)
      return gzwrite(gz_, text.data(), static_cast<unsigned>(text.size())) ==
             static_cast<int>(text.size());
    return std::fwrite(text.data(), 1, text.size(), plain_) == text.size();
  }
  bool close() {
    bool ok = true;
    if (gz_ != nullptr) ok = gzclose(gz_) == Z_OK;
    if (plain_ != nullptr) ok = std::fclose(plain_) == 0;
    gz_ = nullptr;
    plain_ = nullptr;
    return ok;
  }
  ~table_file() { close(); }

 private:
  gzFile gz_ = nullptr;
  std::FILE* plain_ = nullptr;
};

constexpr const char* table_names[] = {"harvests", "records", "failures", "unreadable"};

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
    return result;
  }
  add_capture_rows(model, id, result.rows);
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
  table_file tables[std::size(table_names)];
  for (std::size_t t = 0; t < std::size(table_names); ++t) {
    const fs::path path =
        fs::path(settings.out) / (std::string(table_names[t]) + (settings.gzip ? ".jsonl.gz" : ".jsonl"));
    if (!tables[t].open(path, settings.gzip)) {
      std::fprintf(stderr, "kelvra-inspect: %s: cannot be written\n", path.c_str());
      return 2;
    }
  }

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
      if (!result.said.empty()) {
        if (meter) meter->clear();
        std::fprintf(stderr, "%s\n", result.said.c_str());
      }
      const std::string_view rows[] = {result.rows.harvests, result.rows.records,
                                       result.rows.failures, result.rows.unreadable};
      for (std::size_t t = 0; t < std::size(rows); ++t)
        write_failed = !tables[t].write(rows[t]) || write_failed;
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
  for (table_file& table : tables) write_failed = !table.close() || write_failed;
  if (write_failed) {
    std::fprintf(stderr, "kelvra-inspect: %s: the tables could not be written whole\n",
                 settings.out.c_str());
    return 2;
  }
  return damaged ? 1 : 0;
}

}  // namespace inspect
