#include "inspect/input/chunk_buffer.h"

#include <cstring>
#include <span>

namespace inspect {

chunk_buffer::chunk_buffer(std::unique_ptr<byte_source> source, std::size_t kept,
                           std::string label, std::FILE* progress)
    : source_(std::move(source)),
      capacity_(kept + chunk_size),
      store_(new char[capacity_]) {  // left uninitialised: only read once filled
  if (progress != nullptr) meter_.emplace(std::move(label), progress, progress_meter::clock::now());
}

bool chunk_buffer::refill() {
  if (at_end_) return false;
  const std::size_t held = end_ - begin_;
  if (begin_ != 0) {
    std::memmove(store_.get(), store_.get() + begin_, held);
    position_ += begin_;
    begin_ = 0;
    end_ = held;
  }
  std::size_t got = 0;
  std::string fault;
  // At least a chunk of room while the reader holds no more than it said.
  if (!source_->read(std::span(store_.get() + end_, capacity_ - end_), got, fault)) {
    read_fault_ = std::move(fault);
    got = 0;
  }
  end_ += got;
  if (got == 0) {
    at_end_ = true;
    if (meter_) meter_->clear();
    return false;
  }
  if (meter_) {
    // Looked at once a chunk: thousands of records apart.
    const auto now = progress_meter::clock::now();
    if (meter_->due(now)) meter_->update(source_->consumed(), source_->size(), now);
  }
  return true;
}

}  // namespace inspect
