#pragma once

// The label sheet of --labels: CSV (RFC 4180) with a header row, whose first
// column names a capture by its path as given ("capture") or by its
// content's SHA-256 ("capture_sha256"), and whose other columns are labels
// (build, model, zone, anything), carried into the harvests table.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace inspect {

struct label_sheet {
  bool by_sha256 = false;
  std::vector<std::string> columns;  // the labels' names, in sheet order
  std::unordered_map<std::string, std::vector<std::string>> rows;  // key -> values

  // A capture's labels, as the sheet is keyed; null when it names it not.
  const std::vector<std::string>* find(const std::string& path, const std::string& sha256) const;
  std::optional<std::size_t> column(std::string_view name) const;
};

enum class sheet_problem_kind {
  syntax,             // not CSV
  empty,              // no header row
  first_column,       // neither "capture" nor "capture_sha256"
  duplicate_column,
  field_count,        // a row with more or fewer fields than the header
  empty_key,
  bad_sha256,
  duplicate_capture,
};

struct sheet_problem {
  sheet_problem_kind kind = sheet_problem_kind::syntax;
  std::uint64_t line = 0;      // from 1
  std::string value;           // the column, key or libcsv's words
  std::uint64_t first_line = 0;  // duplicate_capture: where it was named first
  std::size_t fields = 0, wanted = 0;  // field_count
};

// "line N: ..."
std::string sheet_problem_text(const sheet_problem& problem);

bool read_label_sheet(std::string_view text, label_sheet& sheet, sheet_problem& problem);

}  // namespace inspect
