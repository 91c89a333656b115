#include "inspect/input/label_sheet.h"

#include <csv.h>

#include <algorithm>

namespace inspect {
namespace {

// libcsv's rows, each with the line it starts on.
struct sheet_reader {
  std::uint64_t line = 1;       // of the text fed last
  std::uint64_t newlines = 0;   // inside the current row's quoted fields
  std::vector<std::string> fields;
  std::vector<std::pair<std::uint64_t, std::vector<std::string>>> rows;

  static void field(void* text, std::size_t size, void* self) {
    auto& reader = *static_cast<sheet_reader*>(self);
    std::string value = size == 0 ? std::string() : std::string(static_cast<const char*>(text), size);
    reader.newlines += static_cast<std::uint64_t>(std::count(value.begin(), value.end(), '\n'));
    reader.fields.push_back(std::move(value));
  }
  static void row_end(int, void* self) {
    auto& reader = *static_cast<sheet_reader*>(self);
    reader.rows.emplace_back(reader.line - reader.newlines, std::move(reader.fields));
    reader.fields.clear();
    reader.newlines = 0;
  }
};

// Blanks belong to a field: RFC 4180 keeps them.
int no_space(unsigned char) { return 0; }

bool hex_sha256(std::string& key) {
  std::transform(key.begin(), key.end(), key.begin(),
                 [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c; });
  return key.size() == 64 && std::all_of(key.begin(), key.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

bool parse(std::string_view text, sheet_reader& reader, sheet_problem& problem) {
  csv_parser parser;
  if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0) {
    problem = {sheet_problem_kind::syntax, 1, "out of memory"};
    return false;
  }
  csv_set_space_func(&parser, no_space);
  bool ok = true, ended_line = false;
  // A line at a time, so that each row knows its line.
  while (ok && !text.empty()) {
    const std::size_t end = text.find('\n');
    const std::string_view piece = text.substr(0, end == std::string_view::npos ? text.size() : end + 1);
    ok = csv_parse(&parser, piece.data(), piece.size(), sheet_reader::field, sheet_reader::row_end,
                   &reader) == piece.size();
    text.remove_prefix(piece.size());
    ended_line = piece.ends_with('\n');
    if (ok && ended_line) ++reader.line;
  }
  if (ok && csv_fini(&parser, sheet_reader::field, sheet_reader::row_end, &reader) != 0) {
    // A quote left open runs to the end: the last line the text has.
    ok = false;
    if (ended_line) --reader.line;
  }
  if (!ok) problem = {sheet_problem_kind::syntax, reader.line, csv_strerror(csv_error(&parser))};
  csv_free(&parser);
  return ok;
}

}  // namespace

const std::vector<std::string>* label_sheet::find(const std::string& path,
                                                  const std::string& sha256) const {
  const auto found = rows.find(by_sha256 ? sha256 : path);
  return found == rows.end() ? nullptr : &found->second;
}

std::optional<std::size_t> label_sheet::column(std::string_view name) const {
  const auto found = std::find(columns.begin(), columns.end(), name);
  if (found == columns.end()) return std::nullopt;
  return static_cast<std::size_t>(found - columns.begin());
}

std::string sheet_problem_text(const sheet_problem& p) {
  std::string text = "line " + std::to_string(p.line) + ": ";
  switch (p.kind) {
    case sheet_problem_kind::syntax: return text + "not CSV: " + p.value;
    case sheet_problem_kind::empty: return text + "no header row";
    case sheet_problem_kind::first_column:
      return text + "the first column is \"" + p.value + "\", not capture or capture_sha256";
    case sheet_problem_kind::duplicate_column: return text + "the column \"" + p.value + "\" twice";
    case sheet_problem_kind::field_count:
      return text + std::to_string(p.fields) + " fields, where the header has " +
             std::to_string(p.wanted);
    case sheet_problem_kind::empty_key: return text + "no capture named";
    case sheet_problem_kind::bad_sha256: return text + "\"" + p.value + "\" is no SHA-256";
    case sheet_problem_kind::duplicate_capture:
      return text + "\"" + p.value + "\" again, named on line " + std::to_string(p.first_line);
  }
  return text;
}

bool read_label_sheet(std::string_view text, label_sheet& sheet, sheet_problem& problem) {
  sheet = {};
  if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);  // a spreadsheet's byte-order mark
  sheet_reader reader;
  if (!parse(text, reader, problem)) return false;
  if (reader.rows.empty()) {
    problem = {sheet_problem_kind::empty, 1, {}};
    return false;
  }
  const auto& [header_line, header] = reader.rows.front();
  if (header[0] != "capture" && header[0] != "capture_sha256") {
    problem = {sheet_problem_kind::first_column, header_line, header[0]};
    return false;
  }
  sheet.by_sha256 = header[0] == "capture_sha256";
  for (std::size_t c = 0; c < header.size(); ++c) {
    if (std::find(header.begin(), header.begin() + static_cast<std::ptrdiff_t>(c), header[c]) !=
        header.begin() + static_cast<std::ptrdiff_t>(c)) {
      problem = {sheet_problem_kind::duplicate_column, header_line, header[c]};
      return false;
    }
    if (c != 0) sheet.columns.push_back(header[c]);
  }
  std::unordered_map<std::string, std::uint64_t> named_on;
  for (std::size_t r = 1; r < reader.rows.size(); ++r) {
    auto& [line, fields] = reader.rows[r];
    if (fields.size() != header.size()) {
      problem = {sheet_problem_kind::field_count, line, {}};
      problem.fields = fields.size();
      problem.wanted = header.size();
      return false;
    }
    std::string key = fields[0];
    if (key.empty()) {
      problem = {sheet_problem_kind::empty_key, line, {}};
      return false;
    }
    if (sheet.by_sha256 && !hex_sha256(key)) {
      problem = {sheet_problem_kind::bad_sha256, line, key};
      return false;
    }
    if (const auto [at, fresh] = named_on.emplace(key, line); !fresh) {
      problem = {sheet_problem_kind::duplicate_capture, line, key, at->second};
      return false;
    }
    fields.erase(fields.begin());
    sheet.rows.emplace(std::move(key), std::move(fields));
  }
  return true;
}

}  // namespace inspect
