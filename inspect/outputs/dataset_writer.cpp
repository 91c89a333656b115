#include "inspect/outputs/dataset_writer.h"

#include <zlib.h>

#include <cstdio>
#include <cstring>

#include "inspect/input/content_hash.h"

namespace inspect {

namespace fs = std::filesystem;

std::string hive_folder(std::string_view label, std::optional<std::string_view> value) {
  const auto escape = [](std::string_view text, std::string& out) {
    static constexpr std::string_view escaped = "\"#%'*/:=?\\\x7f{[]^";
    static constexpr char digits[] = "0123456789ABCDEF";
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte < 0x20 || escaped.find(c) != std::string_view::npos) {
        out += '%';
        out += digits[byte >> 4];
        out += digits[byte & 0xf];
      } else {
        out += c;
      }
    }
  };
  std::string folder;
  escape(label, folder);
  folder += '=';
  if (value && !value->empty())
    escape(*value, folder);
  else
    folder += "__HIVE_DEFAULT_PARTITION__";
  return folder;
}

// One table's file: its bytes counted and hashed as they reach the disk,
// compressed first with --gzip.
class dataset_writer::table_file {
 public:
  bool open(const fs::path& path, bool gzip) {
    file_ = std::fopen(path.c_str(), "wb");
    if (file_ == nullptr) return false;
    std::setvbuf(file_, nullptr, _IOFBF, 256 * 1024);
    // 15 + 16: a gzip member rather than a zlib stream.
    gzip_ = gzip && deflateInit2(&stream_, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) == Z_OK;
    return gzip_ == gzip;
  }

  bool write(std::string_view text) {
    if (text.empty()) return true;
    for (const char* at = text.data(); (at = static_cast<const char*>(
                                            std::memchr(at, '\n', text.data() + text.size() - at)));
         ++at)
      ++rows_;
    if (!gzip_) return put(text.data(), text.size());
    while (!text.empty()) {
      const std::size_t part = std::min<std::size_t>(text.size(), 1u << 30);
      stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
      stream_.avail_in = static_cast<uInt>(part);
      if (!deflate_all(Z_NO_FLUSH)) return false;
      text.remove_prefix(part);
    }
    return true;
  }

  bool close() {
    bool ok = file_ != nullptr;
    if (gzip_) {
      ok = deflate_all(Z_FINISH) && ok;
      deflateEnd(&stream_);
      gzip_ = false;
    }
    if (file_ != nullptr) ok = std::fclose(file_) == 0 && ok;
    file_ = nullptr;
    return ok;
  }

  ~table_file() { close(); }

  std::uint64_t rows() const { return rows_; }
  std::uint64_t bytes() const { return bytes_; }
  std::string sha256() { return hash_.hex(); }

 private:
  bool put(const char* data, std::size_t size) {
    hash_.add(data, size);
    bytes_ += size;
    return size == 0 || std::fwrite(data, 1, size, file_) == size;
  }

  bool deflate_all(int flush) {
    for (;;) {
      stream_.next_out = buffer_.data();
      stream_.avail_out = static_cast<uInt>(buffer_.size());
      const int said = deflate(&stream_, flush);
      if (said == Z_STREAM_ERROR) return false;
      if (!put(reinterpret_cast<const char*>(buffer_.data()), buffer_.size() - stream_.avail_out))
        return false;
      if (flush == Z_FINISH ? said == Z_STREAM_END : stream_.avail_out != 0) return true;
    }
  }

  std::FILE* file_ = nullptr;
  bool gzip_ = false;
  z_stream stream_{};
  std::array<Bytef, 128 * 1024> buffer_{};
  content_hash hash_;
  std::uint64_t rows_ = 0, bytes_ = 0;
};

struct dataset_writer::folder_files {
  std::array<table_file, dataset_tables.size()> tables;
  std::array<std::string, dataset_tables.size()> paths;  // below the dataset
};

dataset_writer::dataset_writer(fs::path out, bool gzip, bool top) : out_(std::move(out)), gzip_(gzip) {
  if (top) open("");
}

dataset_writer::~dataset_writer() = default;

dataset_writer::folder_files* dataset_writer::open(const std::string& folder) {
  const auto found = folders_.find(folder);
  if (found != folders_.end()) return found->second.get();
  auto files = std::make_unique<folder_files>();
  const fs::path where = out_ / folder;
  std::error_code error;
  if (!folder.empty()) fs::create_directories(where, error);
  for (std::size_t t = 0; t < dataset_tables.size(); ++t) {
    const std::string name = std::string(dataset_tables[t].name) + (gzip_ ? ".jsonl.gz" : ".jsonl");
    files->paths[t] = folder.empty() ? name : folder + '/' + name;
    if (!files->tables[t].open(where / name, gzip_)) {
      fault_ = (where / name).string();
      return nullptr;
    }
  }
  return folders_.emplace(folder, std::move(files)).first->second.get();
}

bool dataset_writer::write(const std::string& folder, const std::array<std::string_view, 4>& rows) {
  if (!fault_.empty()) return false;
  folder_files* files = open(folder);
  if (files == nullptr) return false;
  for (std::size_t t = 0; t < rows.size(); ++t)
    if (!files->tables[t].write(rows[t])) {
      fault_ = (out_ / files->paths[t]).string();
      return false;
    }
  return true;
}

bool dataset_writer::close(std::vector<table_file_facts>& facts) {
  bool ok = fault_.empty();
  for (auto& [folder, files] : folders_)
    for (std::size_t t = 0; t < dataset_tables.size(); ++t) {
      if (!files->tables[t].close() && ok) {
        fault_ = (out_ / files->paths[t]).string();
        ok = false;
      }
      facts.push_back({t, files->paths[t], files->tables[t].rows(), files->tables[t].bytes(),
                       files->tables[t].sha256()});
    }
  return ok;
}

bool write_manifest(const fs::path& out, const dataset_manifest& manifest) {
  const std::string text = manifest_json(manifest);
  const fs::path final = out / "manifest.json";
  const fs::path temporary = out / ".manifest.json.tmp";
  std::FILE* file = std::fopen(temporary.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  if (std::fclose(file) != 0 || !written) {
    std::remove(temporary.c_str());
    return false;
  }
  std::error_code error;
  fs::rename(temporary, final, error);
  return !error;
}

}  // namespace inspect
