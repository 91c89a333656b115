#pragma once

// The bytes of an input: a file (gzip-compressed or not), standard input or
// memory.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "inspect/input/input_damage.h"

namespace inspect {

class byte_source {
 public:
  virtual ~byte_source() = default;
  // Up to out.size() bytes; 0 at the end. False on a read fault, with the
  // text in `fault`.
  virtual bool read(std::span<char> out, std::size_t& got, std::string& fault) = 0;
  // Bytes of the underlying file consumed so far and its size, for progress;
  // size 0 when unknown (a pipe).
  virtual std::uint64_t consumed() const = 0;
  virtual std::uint64_t size() const = 0;
};

// `path` "-" is standard input. gzip by content (zlib), plain files as they
// are. Null, with `fault` filled, when the file cannot be opened.
std::unique_ptr<byte_source> open_file(const std::string& path, input_fault& fault);
std::unique_ptr<byte_source> memory_source(std::string_view bytes);

// An open descriptor read through zlib (gzip by content); takes `fd` over,
// closing it even when it fails (null: out of memory).
std::unique_ptr<byte_source> gzip_descriptor(int fd, std::uint64_t size);

// `start` first, then the rest of `rest`: bytes looked at before anything
// decided what they are.
std::unique_ptr<byte_source> replayed(std::string start, std::unique_ptr<byte_source> rest);

}  // namespace inspect
