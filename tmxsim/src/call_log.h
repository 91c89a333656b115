#pragma once

// The call log (TMXSIM_LOG): one line per platform call, the call's name
// first, then its salient arguments, "->" and what it returned. A call that
// breaks a rule ends its line with "misuse: " and the rule.

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace tmxsim {

class call_log {
 public:
  call_log() = default;
  call_log(const call_log&) = delete;
  call_log& operator=(const call_log&) = delete;

  // Appends to `path`; false when it cannot be opened.
  bool open(const char* path);
  bool on() const { return file_ != nullptr; }

  // Marks the call being made as a misuse.
  void note_misuse(const char* rule) { misuse_ = rule; }

  void write(std::string& line);

  // Writes the last line and closes the log.
  void finish(const std::string& last_line);

 private:
  std::FILE* file_ = nullptr;
  const char* misuse_ = nullptr;
};

// One line, written when it goes out of scope. Build it only when the log is
// on: logging costs nothing otherwise.
class log_line {
 public:
  log_line(call_log& log, std::string_view call) : log_(log), text_(call) {}
  ~log_line() { log_.write(text_); }
  log_line(const log_line&) = delete;
  log_line& operator=(const log_line&) = delete;

  log_line& word(std::string_view text);
  log_line& quoted(const char* text);  // NULL shows as NULL
  log_line& hex(std::uint64_t value);
  log_line& number(std::int64_t value);
  log_line& returns() { return word("->"); }

 private:
  call_log& log_;
  std::string text_;
};

}  // namespace tmxsim
