#include <cstring>

#include "inspect/input/input_reader.h"

namespace inspect {
namespace {

class raw_record_reader final : public record_reader {
 public:
  raw_record_reader(std::unique_ptr<chunk_buffer> input, damage_log& damage)
      : input_(std::move(input)), damage_(damage) {}

  bool next(input_record& record) override {
    if (ended_) return false;
    while (input_->data().size() < record.bytes.size()) {
      if (!input_->refill()) return end();
    }
    std::memcpy(record.bytes.data(), input_->data().data(), record.bytes.size());
    record.line = record.last_line = 0;
    record.offset = input_->position();
    record.calendar_text.reset();
    input_->take(record.bytes.size());
    return true;
  }

  bool found_form() const override { return true; }

 private:
  bool end() {
    ended_ = true;
    const std::size_t tail = input_->data().size();
    const std::uint64_t at = input_->position();
    if (const auto& read_fault = input_->read_fault()) {
      damage_.add({.kind = problem_kind::input_cut_short, .byte = at + tail, .reason = *read_fault});
    }
    if (tail != 0) {
      // A capture cut short loses its last record, not the rest.
      damage_.add({.kind = problem_kind::raw_tail,
                   .byte = at,
                   .numbers = {static_cast<std::int64_t>(tail), 0}});
    }
    return false;
  }

  std::unique_ptr<chunk_buffer> input_;
  damage_log& damage_;
  bool ended_ = false;
};

}  // namespace

std::unique_ptr<record_reader> read_raw_records(std::unique_ptr<chunk_buffer> input,
                                                damage_log& damage) {
  return std::make_unique<raw_record_reader>(std::move(input), damage);
}

}  // namespace inspect
