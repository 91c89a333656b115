#include "inspect/input/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "inspect/input/gunzip_source.h"

namespace inspect {
namespace {

// A file read as it is; a pipe gives its kept start first.
class plain_source final : public byte_source {
 public:
  plain_source(std::unique_ptr<input_file> file, std::uint64_t size)
      : file_(std::move(file)), size_(size) {}
  bool read(std::span<char> out, std::size_t& got, std::string& fault) override {
    if (!file_->read_raw(out, got, fault)) return false;
    consumed_ += got;
    return true;
  }
  std::uint64_t consumed() const override { return consumed_; }
  std::uint64_t size() const override { return size_; }

 private:
  std::unique_ptr<input_file> file_;
  std::uint64_t size_;
  std::uint64_t consumed_ = 0;
};

}  // namespace

std::unique_ptr<input_file> input_file::open(const std::string& path, input_fault& fault) {
  const auto refuse = [&](int error) {
    fault = {path, "", std::string("cannot open: ") + std::strerror(error)};
    return nullptr;
  };
  // Standard input is duplicated so that closing the input leaves fd 0 open.
  const int fd =
      path == "-" ? fcntl(0, F_DUPFD_CLOEXEC, 0) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return refuse(errno);
  struct stat status {};
  if (fstat(fd, &status) != 0 || S_ISDIR(status.st_mode)) {
    const int error = S_ISDIR(status.st_mode) ? EISDIR : errno;
    ::close(fd);
    return refuse(error);
  }
  const bool regular = S_ISREG(status.st_mode);
  std::unique_ptr<input_file> file(
      new input_file(fd, regular ? static_cast<std::uint64_t>(status.st_size) : 0, regular));
  if (regular) {
    // Standard input is where it stood when first opened, however often a
    // walk reads it again (every duplicate shares its offset).
    static const off_t stdin_origin = lseek(0, 0, SEEK_CUR);
    file->origin_ = std::max<off_t>(0, path == "-" ? stdin_origin : lseek(fd, 0, SEEK_CUR));
  }
  file->start_.resize(start_size);
  std::size_t have = 0;
  while (have < start_size) {
    const ssize_t got = regular ? pread(fd, file->start_.data() + have, start_size - have,
                                        file->origin_ + static_cast<off_t>(have))
                                : ::read(fd, file->start_.data() + have, start_size - have);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      fault = {path, "", std::string("read error: ") + std::strerror(errno)};
      return nullptr;
    }
    if (got == 0) break;
    have += static_cast<std::size_t>(got);
  }
  file->start_.resize(have);
  return file;
}

void input_file::rewind() {
  if (seekable_) lseek(fd_, origin_, SEEK_SET);
}

input_file::~input_file() {
  if (fd_ >= 0) ::close(fd_);
}

bool input_file::read_raw(std::span<char> out, std::size_t& got, std::string& fault) {
  got = 0;
  if (!seekable_ && replayed_ < start_.size()) {
    got = std::min(out.size(), start_.size() - replayed_);
    std::copy_n(start_.data() + replayed_, got, out.data());
    replayed_ += got;
    return true;
  }
  for (;;) {
    const ssize_t count = ::read(fd_, out.data(), out.size());
    if (count >= 0) {
      got = static_cast<std::size_t>(count);
      return true;
    }
    if (errno != EINTR) {
      fault = std::string("read error: ") + std::strerror(errno);
      return false;
    }
  }
}

std::unique_ptr<byte_source> input_file::as_capture(std::unique_ptr<input_file> file) {
  const bool packed = gzip_magic(file->start_);
  file->rewind();
  if (file->seekable_ && packed) {
    // zlib reads the file itself, from its start.
    const int fd = std::exchange(file->fd_, -1);
    return gzip_descriptor(fd, file->size_);
  }
  // A plain file is read as it is: zlib's pass-through would copy every byte once more.
  const std::uint64_t size = file->size_;
  std::unique_ptr<byte_source> source = std::make_unique<plain_source>(std::move(file), size);
  return packed ? gunzip(std::move(source)) : std::move(source);
}

std::unique_ptr<byte_source> open_file(const std::string& path, input_fault& fault) {
  std::unique_ptr<input_file> file = input_file::open(path, fault);
  if (!file) return nullptr;
  std::unique_ptr<byte_source> source = input_file::as_capture(std::move(file));
  if (!source) fault = {path, "", std::string("cannot open: ") + std::strerror(ENOMEM)};
  return source;
}

}  // namespace inspect
