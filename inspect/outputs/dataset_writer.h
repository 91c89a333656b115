#pragma once

// The files of a tables dataset as they are written: one file a table in
// each folder (the top, or a Hive-style folder per label value), gzip or
// not, each counting its rows and hashing its bytes as they go to disk, and
// the manifest that says so, put in place last.

#include <array>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/outputs/dataset_manifest.h"

namespace inspect {

// `label=value` as Hive names a partition's folder: the characters Hive
// escapes as %XX, no value as __HIVE_DEFAULT_PARTITION__.
std::string hive_folder(std::string_view label, std::optional<std::string_view> value);

class dataset_writer {
 public:
  // `top`: the four tables in `out` itself, even if no row comes.
  dataset_writer(std::filesystem::path out, bool gzip, bool top);
  ~dataset_writer();
  dataset_writer(const dataset_writer&) = delete;
  dataset_writer& operator=(const dataset_writer&) = delete;

  // One capture's rows, table by table in dataset_tables' order, into
  // `folder` below the dataset ("" the top). False once a file failed;
  // fault() names it.
  bool write(const std::string& folder, const std::array<std::string_view, 4>& rows);
  // Closes every file; each one's facts, in folder order.
  bool close(std::vector<table_file_facts>& files);
  const std::string& fault() const { return fault_; }

 private:
  class table_file;
  struct folder_files;
  folder_files* open(const std::string& folder);

  std::filesystem::path out_;
  bool gzip_;
  std::map<std::string, std::unique_ptr<folder_files>> folders_;
  std::string fault_;
};

// DIR/manifest.json, written beside and renamed into place whole.
bool write_manifest(const std::filesystem::path& out, const dataset_manifest& manifest);

}  // namespace inspect
