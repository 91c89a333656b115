#pragma once

// JSON written straight into a string, for every JSON document the desk
// tool writes (report, phone, summary, trace): the documents are large and
// their shape fixed, so no document tree is built.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace inspect {

// `text` as a JSON string. Text that is not UTF-8 keeps its bytes as the
// code points of the same values, as the records' JSON does.
void append_json_string(std::string& out, std::string_view text);

// Keys, values and the commas between them.
class json_writer {
 public:
  // `indent`: each item on a line of its own, indented two blanks a level.
  explicit json_writer(std::string& out, bool indent = false) : out_(out), indent_(indent) {}

  // Integers from 2^53 on as strings of their digits: a browser's numbers
  // lose such values, and traces are read in browsers.
  json_writer& exact_in_browsers() {
    exact_ = true;
    return *this;
  }

  json_writer& begin_object();
  // Members of an object another writer opens: no brace, commas between.
  json_writer& begin_members();
  json_writer& end_object();
  json_writer& begin_array();
  json_writer& end_array();
  json_writer& key(std::string_view name);

  json_writer& value(std::string_view text);
  json_writer& value(const char* text) { return value(std::string_view(text)); }
  json_writer& value(const std::string& text) { return value(std::string_view(text)); }
  json_writer& value(std::uint64_t number);
  json_writer& value(std::int64_t number);
  json_writer& value(std::uint32_t number) { return value(std::uint64_t{number}); }
  json_writer& value(bool flag);
  json_writer& number(double value);  // finite values; others are null
  json_writer& null();
  // A value that is JSON already, its integers written as its writer chose.
  json_writer& raw(std::string_view json);
  // The next value starts a line: one event a line reads and compares well.
  json_writer& line_break() {
    break_ = true;
    return *this;
  }

  std::string& text() noexcept { return out_; }

 private:
  void separate();
  void close(char bracket);
  void new_line();

  std::string& out_;
  bool indent_;
  bool exact_ = false;
  std::vector<bool> first_;  // per open container: nothing in it yet
  bool after_key_ = false;
  bool break_ = false;
};

}  // namespace inspect
