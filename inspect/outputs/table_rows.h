#pragma once

// A capture's rows of the fleet's tables, as JSON Lines: one row per
// harvest, per profile record and per failure line, each carrying the
// capture (its path as given), the harvest (from 1) and the capture's
// SHA-256. The tables' schemas are inspect/schema/{harvests,records_table,
// failures,unreadable}.schema.json.

#include <string>
#include <string_view>

#include "inspect/capture/capture_model.h"

namespace inspect {

struct capture_identity {
  std::string_view path;    // as given
  std::string_view sha256;  // of the content, after gzip
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
