#include "inspect/gate/dataset_files.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <vector>

namespace inspect::gate {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::pair<std::string_view, table_kind>, 3> tables = {{
    {"harvests", table_kind::harvests},
    {"failures", table_kind::failures},
    {"unreadable", table_kind::unreadable},
}};

// The table's file in `folder`, plain or gzip; empty when there is none.
fs::path table_file(const fs::path& folder, std::string_view name) {
  std::error_code error;
  for (const char* ending : {".jsonl", ".jsonl.gz"}) {
    const fs::path path = folder / (std::string(name) + ending);
    if (fs::is_regular_file(path, error)) return path;
  }
  return {};
}

bool is_harvests_file(const fs::path& path) {
  const std::string name = path.filename().string();
  return name == "harvests.jsonl" || name == "harvests.jsonl.gz";
}

// Lines of a file, plain or gzip (zlib reads both).
bool read_lines(const fs::path& path, table_kind table, const row_place& place,
                sample_builder& builder, std::string& fault) {
  gzFile file = gzopen(path.c_str(), "rb");
  if (file == nullptr || gzbuffer(file, 1 << 20) != 0) {
    if (file != nullptr) gzclose(file);
    fault = path.string() + ": cannot be opened";
    return false;
  }
  std::string pending;
  std::vector<char> chunk(1 << 20);
  std::uint64_t number = 0;
  int got = 0;
  while ((got = gzread(file, chunk.data(), static_cast<unsigned>(chunk.size()))) > 0) {
    pending.append(chunk.data(), static_cast<std::size_t>(got));
    std::size_t start = 0;
    for (std::size_t end; (end = pending.find('\n', start)) != std::string::npos; start = end + 1)
      builder.add_row(table, std::string_view(pending).substr(start, end - start), place, ++number);
    pending.erase(0, start);
  }
  const bool whole = got == 0 && gzclose(file) == Z_OK;
  if (got != 0) gzclose(file);
  if (!whole) {
    fault = path.string() + ": cannot be read whole";
    return false;
  }
  if (!pending.empty()) builder.add_row(table, pending, place, ++number);
  return true;
}

}  // namespace

bool is_dataset(const std::string& path) {
  std::error_code error;
  if (fs::is_regular_file(path, error)) return is_harvests_file(path);
  for (auto it = fs::recursive_directory_iterator(path, error);
       !error && it != fs::recursive_directory_iterator(); it.increment(error))
    if (is_harvests_file(it->path())) return true;
  return false;
}

bool read_dataset(const std::string& path, int side, sample_builder& builder, std::string& fault) {
  std::error_code error;
  std::vector<fs::path> folders;
  if (fs::is_regular_file(path, error)) {
    folders.push_back(fs::path(path).parent_path());
  } else {
    for (auto it = fs::recursive_directory_iterator(path, error);
         !error && it != fs::recursive_directory_iterator(); it.increment(error))
      if (is_harvests_file(it->path())) folders.push_back(it->path().parent_path());
    if (error) {
      fault = path + ": " + error.message();
      return false;
    }
  }
  std::sort(folders.begin(), folders.end());
  folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
  for (const fs::path& folder : folders) {
    row_place place;
    place.side = side;
    place.group = folder.string();
    for (const fs::path& part : fs::relative(folder, fs::is_regular_file(path, error) ? folder : fs::path(path), error)) {
      const std::string text = part.string();
      if (const auto equals = text.find('='); equals != std::string::npos && equals > 0)
        place.partition.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    }
    for (const auto& [name, table] : tables) {
      const fs::path file = table_file(folder, name);
      if (!file.empty() && !read_lines(file, table, place, builder, fault)) return false;
    }
  }
  return true;
}

}  // namespace inspect::gate
