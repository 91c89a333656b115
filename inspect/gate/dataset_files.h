#pragma once

// A dataset on disk as `tables --out` or kelvra-fleet write it: harvests,
// failures and unreadable tables (.jsonl or .jsonl.gz), in the folder given
// or in folders below it (kelvra-fleet's part-NNNNN, a Hive partition's
// key=value), each folder's tables read together.

#include <string>

#include "inspect/gate/fleet_samples.h"

namespace inspect::gate {

// A harvests table, or a folder with one somewhere below it.
bool is_dataset(const std::string& path);

// Every table's rows into `builder` for `side` (-1: the split decides).
// False, with `fault` saying why, when a table cannot be read.
bool read_dataset(const std::string& path, int side, sample_builder& builder, std::string& fault);

}  // namespace inspect::gate
