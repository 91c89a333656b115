#pragma once

// DIR/manifest.json of a tables dataset: what made it, from what, and each
// table file's rows and SHA-256, so that a reader can tell a whole dataset
// from a partial one without reading it. Its schema is
// inspect/schema/manifest.schema.json; kelvra-fleet merges its shards'
// manifests into one of the same shape.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace inspect {

inline constexpr int manifest_schema_version = 1;

// The tables, in the order of their files and of table_rows.
struct table_kind {
  std::string_view name;    // harvests -> harvests.jsonl
  std::string_view schema;  // its file in inspect/schema
  int version;              // of the rows that schema describes
};
extern const std::array<table_kind, 4> dataset_tables;

// What the inputs gave. Captures are counted once each, whether bare or a
// member of an archive.
struct input_counts {
  std::uint64_t listed = 0;               // inputs read (files, archives)
  std::uint64_t read_whole = 0;           // captures
  std::uint64_t damaged = 0;              // captures read with damage
  std::uint64_t unreadable = 0;           // rows of unreadable.jsonl
  std::uint64_t members_passed_over = 0;  // archive members that are no capture
  std::uint64_t not_read = 0;             // inputs of a run cut short (a fleet's lost shard)

  input_counts& operator+=(const input_counts& other);
};

struct table_file_facts {
  std::size_t table = 0;  // into dataset_tables
  std::string path;       // below the dataset's directory, '/' between folders
  std::uint64_t rows = 0;
  std::uint64_t bytes = 0;
  std::string sha256;     // of the file as written (compressed, with --gzip)
};

struct dataset_manifest {
  std::string_view tool;
  std::string_view version;
  input_counts inputs;
  std::string partition_by;  // the label of the folders, or empty
  std::vector<table_file_facts> files;
};

std::string manifest_json(const dataset_manifest& manifest);

}  // namespace inspect
