#pragma once

// What is wrong with an input: a fault that keeps it from being read at
// all (one line, status 2), or damage found while it was read all the same
// (told as it is found, kept as data for the JSON outputs, status 1).

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/input/problems.h"

namespace inspect {

// The name an input goes by for people: "standard input" for "-".
std::string input_label(std::string_view file);

struct input_fault {
  std::string file;   // as the user named it
  std::string where;  // "line 12", "byte 480", or empty
  std::string fault;  // lower case, no full stop
};

// "kelvra-inspect: FILE: WHERE: FAULT"
std::string fault_line(const input_fault& fault);



// The damage of one input, each told on `messages` as it is found (a few
// hundred at most, then how many more) and kept for the outputs.
class damage_log {
 public:
  damage_log(std::string file, std::FILE* messages) : file_(std::move(file)), messages_(messages) {}

  void add(problem found);
  // Says how many were found but not told.
  void finish();

  const std::vector<problem>& entries() const noexcept { return entries_; }
  // Something of the input was lost.
  bool lost() const noexcept { return lost_; }
  const std::string& file() const noexcept { return file_; }

  static constexpr std::size_t told_at_most = 200;
  static constexpr std::size_t kept_at_most = 10000;

 private:
  std::string file_;
  std::FILE* messages_;
  std::vector<problem> entries_;
  std::size_t found_ = 0;
  bool lost_ = false;
};

}  // namespace inspect
