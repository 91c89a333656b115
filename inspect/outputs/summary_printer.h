#pragma once

// The summary's facts, each handed over once with its key for tools and its
// label for people: the text printer lays them out as aligned lines and
// tables, the JSON printer as one object of the same content.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/capture/capture_model.h"

namespace inspect {

// A value of the summary. Times are microseconds whatever they show as: the
// JSON keys say "_us"; text writes a duration in µs, a position in ms.
struct summary_value {
  // millis: a time from an origin; span: an unsigned duration shown in ms.
  enum class kind { none, count, micros, millis, span, offset, text, flag };
  kind shape = kind::none;
  std::uint64_t count_value = 0;
  std::int64_t micros_value = 0;
  std::string text_value;
  bool flag_value = false;

  static summary_value none() { return {}; }
  static summary_value count(std::uint64_t n) { return {kind::count, n, 0, {}, false}; }
  static summary_value micros(std::uint64_t us) {
    return {kind::micros, us, static_cast<std::int64_t>(us), {}, false};
  }
  static summary_value millis(std::int64_t us) { return {kind::millis, 0, us, {}, false}; }
  static summary_value span(std::uint64_t us) { return {kind::span, us, 0, {}, false}; }
  static summary_value offset(std::int64_t us) { return {kind::offset, 0, us, {}, false}; }
  static summary_value text(std::string t) { return {kind::text, 0, 0, std::move(t), false}; }
  static summary_value flag(bool f) { return {kind::flag, 0, 0, {}, f}; }
};

struct summary_column {
  std::string_view key;
  std::string_view title;
  std::size_t width;  // text columns, in characters
};

class summary_printer {
 public:
  virtual ~summary_printer() = default;
  // The first line: what was summarised.
  virtual void heading(const capture_model& model, std::size_t harvest) = 0;
  // A part of the summary; parts do not nest.
  virtual void begin(std::string_view key, std::string_view title) = 0;
  virtual void end() = 0;
  // A part that is not there: "key": null, or its title and why.
  virtual void absent(std::string_view key, std::string_view title, std::string_view why) = 0;
  virtual void fact(std::string_view key, std::string_view label, const summary_value& value) = 0;
  virtual void table(std::string_view key, std::span<const summary_column> columns,
                     const std::vector<std::vector<summary_value>>& rows) = 0;
  // Problem rows: notes, disagreements, what is missing, damage.
  virtual void problems(std::string_view key, std::string_view prefix, std::span<const problem> found) = 0;
  virtual void runs(const std::vector<sequence_run>& runs, bool sources_known) = 0;
  virtual void failures(const std::vector<failure_line>& failures) = 0;
  virtual void finish() = 0;
};

// Writes into `out`.
std::unique_ptr<summary_printer> text_summary_printer(std::string& out);
std::unique_ptr<summary_printer> json_summary_printer(std::string& out);

}  // namespace inspect
