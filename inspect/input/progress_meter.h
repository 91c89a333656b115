#pragma once

// The "reading FILE: 43%" line on standard error while a big input is read.
// The caller decides whether to show one at all (only on a terminal).

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace inspect {

class progress_meter {
 public:
  using clock = std::chrono::steady_clock;

  // `label` is the input as the user should read it ("standard input" for "-").
  progress_meter(std::string label, std::FILE* out, clock::time_point start);
  ~progress_meter();
  progress_meter(const progress_meter&) = delete;
  progress_meter& operator=(const progress_meter&) = delete;

  // Whether an update at `now` would be shown: a line per 200 ms at most,
  // the first 200 ms after the start, so a quick read shows none.
  bool due(clock::time_point now) const { return now >= next_; }
  // `size` 0 when unknown. Nothing for a known size under 32 MiB.
  void update(std::uint64_t consumed, std::uint64_t size, clock::time_point now);
  // For many inputs: "reading LABEL: 40 of 10000".
  void update_count(std::uint64_t done, std::uint64_t total, clock::time_point now);
  // Takes the line off the terminal, if one is shown.
  void clear();

 private:
  std::string label_;
  std::FILE* out_;
  clock::time_point next_;
  bool shown_ = false;
};

}  // namespace inspect
