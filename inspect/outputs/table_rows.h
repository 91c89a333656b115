#pragma once

// A capture's rows of the fleet's tables, as JSON Lines: one row per
// harvest, per profile record and per failure line, each carrying the
// capture (its path as given), the member of an archive it came from, the
// harvest (from 1) and the capture's SHA-256; a harvest row its labels. The
// tables' schemas are inspect/schema/{harvests,records_table,failures,
// unreadable}.schema.json.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/capture/capture_model.h"

namespace inspect {

// The tables' schemas change together; the version of all four.
inline constexpr int tables_schema_version = 2;

struct capture_identity {
  std::string_view path;    // as given
  std::string_view sha256;  // of the capture's own bytes, decompressed
  std::optional<std::string_view> member = std::nullopt;  // inside an archive; none for a bare file
  std::span<const std::string> label_names = {};          // the label sheet's columns
  const std::vector<std::string>* labels = nullptr;       // this capture's, if the sheet names it
};

struct table_rows {
  std::string harvests;
  std::string records;
  std::string failures;
  std::string unreadable;
};

void add_capture_rows(const capture_model& model, const capture_identity& id, table_rows& rows);

// An input that could not be read at all.
void add_unreadable_row(const capture_identity& id, const input_fault& fault, table_rows& rows);

}  // namespace inspect
