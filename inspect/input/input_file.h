#pragma once

// An input file opened and its first raw bytes looked at, before anything
// decides whether it is a capture or an archive of them. A regular file is
// looked at without moving its offset; a pipe's first bytes are kept and
// read again.

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "inspect/input/byte_source.h"
#include "inspect/input/input_damage.h"

namespace inspect {

class input_file {
 public:
  // Enough for any archive's first header, compressed.
  static constexpr std::size_t start_size = 16 * 1024;

  // `path` "-" is standard input. Null, with `fault`, when it cannot be
  // opened or read.
  static std::unique_ptr<input_file> open(const std::string& path, input_fault& fault);
  ~input_file();
  input_file(const input_file&) = delete;
  input_file& operator=(const input_file&) = delete;

  std::string_view start() const { return start_; }
  // A regular file: it can be read again from its start.
  bool seekable() const { return seekable_; }
  int descriptor() const { return fd_; }
  std::uint64_t size() const { return size_; }

  // Back to where the file was when opened, for a reader of its own
  // (standard input may be shared and read before).
  void rewind();
  // Raw bytes from the very start: the kept start, then the rest.
  bool read_raw(std::span<char> out, std::size_t& got, std::string& fault);

  // The whole file as a capture's bytes, gzip inflated.
  static std::unique_ptr<byte_source> as_capture(std::unique_ptr<input_file> file);

 private:
  input_file(int fd, std::uint64_t size, bool seekable) : fd_(fd), size_(size), seekable_(seekable) {}

  int fd_;
  std::uint64_t size_;
  bool seekable_;
  std::string start_;
  std::size_t replayed_ = 0;  // of start_, on a pipe
  off_t origin_ = 0;          // of a regular file
};

}  // namespace inspect
