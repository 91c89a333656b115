#pragma once

// The SHA-256 of an input's content (after gzip), taken as it is read: the
// fleet's tables carry it so that a capture uploaded twice is found.

#include <memory>
#include <string>

#include "inspect/input/byte_source.h"

namespace inspect {

class content_hash {
 public:
  content_hash();
  ~content_hash();
  content_hash(const content_hash&) = delete;
  content_hash& operator=(const content_hash&) = delete;

  void add(const char* bytes, std::size_t size);
  // 64 lower-case hex digits of all added so far; adds no more after.
  std::string hex();

 private:
  struct state;
  std::unique_ptr<state> state_;
};

// `source` as it is, every byte read also added to `hash`, which must
// outlive it.
std::unique_ptr<byte_source> hashing(std::unique_ptr<byte_source> source, content_hash& hash);

}  // namespace inspect
