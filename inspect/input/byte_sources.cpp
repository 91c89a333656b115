// Files through zlib, which passes plain files through and inflates gzip
// (one member or several) by content; memory as it is.

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <climits>

#include "inspect/input/byte_source.h"

namespace inspect {

namespace {

constexpr unsigned zlib_buffer_size = 128 * 1024;

// zlib prefixes its messages with the path it was given, "<fd:3>" here.
std::string zlib_message(gzFile file, int& error) {
  std::string_view text = gzerror(file, &error);
  if (text.starts_with("<fd:")) {
    if (const auto colon = text.find(": "); colon != std::string_view::npos) {
      text.remove_prefix(colon + 2);
    }
  }
  return std::string(text);
}

class gzip_file_source final : public byte_source {
 public:
  gzip_file_source(gzFile file, std::uint64_t size) : file_(file), size_(size) {}
  ~gzip_file_source() override { gzclose_r(file_); }
  gzip_file_source(const gzip_file_source&) = delete;
  gzip_file_source& operator=(const gzip_file_source&) = delete;

  bool read(std::span<char> out, std::size_t& got, std::string& fault) override {
    got = 0;
    const auto wanted = static_cast<unsigned>(std::min<std::size_t>(out.size(), INT_MAX));
    const int count = gzread(file_, out.data(), wanted);
    if (count > 0) {
      // A fault met after these bytes is reported by the next call.
      got = static_cast<std::size_t>(count);
      delivered_ += got;
      return true;
    }
    int error = Z_OK;
    const std::string message = zlib_message(file_, error);
    if (count == 0 && error == Z_OK) return true;
    if (error == Z_ERRNO) {
      fault = "read error: " + message;
    } else if (error == Z_MEM_ERROR) {
      fault = "out of memory";
    } else {
      fault = "corrupt gzip data: " + message;
    }
    return false;
  }

  std::uint64_t consumed() const override {
    // A pipe has no offset; then the bytes handed out stand in.
    const auto offset = gzoffset(file_);
    return offset >= 0 ? static_cast<std::uint64_t>(offset) : delivered_;
  }
  std::uint64_t size() const override { return size_; }

 private:
  gzFile file_;
  std::uint64_t size_;
  std::uint64_t delivered_ = 0;
};

class memory_byte_source final : public byte_source {
 public:
  explicit memory_byte_source(std::string_view bytes) : bytes_(bytes) {}

  bool read(std::span<char> out, std::size_t& got, std::string&) override {
    got = std::min(out.size(), bytes_.size() - at_);
    std::copy_n(bytes_.data() + at_, got, out.data());
    at_ += got;
    return true;
  }
  std::uint64_t consumed() const override { return at_; }
  std::uint64_t size() const override { return bytes_.size(); }

 private:
  std::string_view bytes_;
  std::size_t at_ = 0;
};

class replayed_source final : public byte_source {
 public:
  replayed_source(std::string start, std::unique_ptr<byte_source> rest)
      : start_(std::move(start)), rest_(std::move(rest)) {}

  bool read(std::span<char> out, std::size_t& got, std::string& fault) override {
    if (at_ < start_.size()) {
      got = std::min(out.size(), start_.size() - at_);
      std::copy_n(start_.data() + at_, got, out.data());
      at_ += got;
      return true;
    }
    return rest_->read(out, got, fault);
  }
  std::uint64_t consumed() const override { return rest_->consumed(); }
  std::uint64_t size() const override { return rest_->size(); }

 private:
  std::string start_;
  std::size_t at_ = 0;
  std::unique_ptr<byte_source> rest_;
};

}  // namespace

std::unique_ptr<byte_source> replayed(std::string start, std::unique_ptr<byte_source> rest) {
  return std::make_unique<replayed_source>(std::move(start), std::move(rest));
}

std::unique_ptr<byte_source> gzip_descriptor(int fd, std::uint64_t size) {
  gzFile file = gzdopen(fd, "rb");
  if (file == nullptr) {
    close(fd);
    return nullptr;
  }
  if (gzbuffer(file, zlib_buffer_size) != 0) {
    gzclose_r(file);
    return nullptr;
  }
  return std::make_unique<gzip_file_source>(file, size);
}

std::unique_ptr<byte_source> memory_source(std::string_view bytes) {
  return std::make_unique<memory_byte_source>(bytes);
}

}  // namespace inspect
