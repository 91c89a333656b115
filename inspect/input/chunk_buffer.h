#pragma once

// The input, a chunk at a time, in one buffer allocated up front: the readers
// take bytes from the front and refill when they need more. The bytes a
// reader has not taken yet (a partial record or line) move to the front
// before the next chunk is read behind them.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "inspect/input/progress_meter.h"
#include "inspect/input/byte_source.h"

namespace inspect {

class chunk_buffer {
 public:
  static constexpr std::size_t chunk_size = 256 * 1024;

  // Room for `kept` bytes held back across a refill, besides the chunk.
  // Progress shows on `progress` when it is not null.
  chunk_buffer(std::unique_ptr<byte_source> source, std::size_t kept, std::string label,
               std::FILE* progress);

  // The bytes not taken yet.
  std::string_view data() const { return {store_.get() + begin_, end_ - begin_}; }
  void take(std::size_t count) { begin_ += count; }
  // Offset in the whole input of data().front().
  std::uint64_t position() const { return position_ + begin_; }

  // Reads more behind data(), keeping data() (at most `kept` bytes). False
  // when no more came: at the end of the input, or on a read fault.
  bool refill();
  bool at_end() const { return at_end_; }
  const std::optional<std::string>& read_fault() const { return read_fault_; }
  // The reader stops early, on a fault: the progress line goes.
  void stop() {
    if (meter_) meter_->clear();
  }

 private:
  std::unique_ptr<byte_source> source_;
  std::size_t capacity_;
  std::unique_ptr<char[]> store_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::uint64_t position_ = 0;  // of store_[0]
  bool at_end_ = false;
  std::optional<std::string> read_fault_;
  std::optional<progress_meter> meter_;
};

}  // namespace inspect
