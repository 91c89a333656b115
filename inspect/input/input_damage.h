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

struct damage {
  std::uint64_t line = 0;       // from 1; 0 when a byte offset or nothing places it
  std::uint64_t last_line = 0;  // of a run of lines; 0 or `line` for one line
  std::optional<std::uint64_t> byte;
  std::string fault;    // what is wrong
  std::string outcome;  // what was done about it
  bool lost = true;     // false for a note: nothing of the capture was lost

  // "line 12", "lines 3-7", "byte 480", or empty.
  std::string where() const;
};

// The damage of one input, each told on `messages` as it is found (a few
// hundred at most, then how many more) and kept for the outputs.
class damage_log {
 public:
  damage_log(std::string file, std::FILE* messages) : file_(std::move(file)), messages_(messages) {}

  void add(damage found);
  // Says how many were found but not told.
  void finish();

  const std::vector<damage>& entries() const noexcept { return entries_; }
  // Something of the input was lost.
  bool lost() const noexcept { return lost_; }
  const std::string& file() const noexcept { return file_; }

  static constexpr std::size_t told_at_most = 200;
  static constexpr std::size_t kept_at_most = 10000;

 private:
  std::string file_;
  std::FILE* messages_;
  std::vector<damage> entries_;
  std::size_t found_ = 0;
  bool lost_ = false;
};

}  // namespace inspect
