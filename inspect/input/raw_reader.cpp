#include "inspect/input/raw_reader.h"

#include <cstdio>
#include <cstring>

namespace inspect {

namespace {

class raw_record_input final : public record_input {
 public:
  raw_record_input(std::unique_ptr<chunk_buffer> input, std::string file, std::FILE* messages)
      : input_(std::move(input)), file_(std::move(file)), messages_(messages) {}

  bool next(input_record& record) override {
    if (ended_) return false;
    while (input_->data().size() < record.bytes.size()) {
      if (!input_->refill()) return end();
    }
    std::memcpy(record.bytes.data(), input_->data().data(), record.bytes.size());
    record.line = 0;
    record.offset = input_->position();
    record.calendar_text.reset();
    input_->take(record.bytes.size());
    return true;
  }

  const std::optional<input_fault>& fault() const override { return fault_; }
  input_form form() const override { return input_form::raw; }

 private:
  bool end() {
    ended_ = true;
    if (const auto& read_fault = input_->read_fault()) {
      fault_ = input_fault{file_, "", *read_fault};
    } else if (const std::size_t tail = input_->data().size(); tail != 0) {
      // A capture cut short loses its last record, not the rest.
      std::fprintf(messages_,
                   "kelvra-inspect: %s: warning: %zu trailing bytes at byte %llu ignored "
                   "(not a whole 48-byte record)\n",
                   input_label(file_).c_str(), tail,
                   static_cast<unsigned long long>(input_->position()));
    }
    return false;
  }

  std::unique_ptr<chunk_buffer> input_;
  std::string file_;
  std::FILE* messages_;
  std::optional<input_fault> fault_;
  bool ended_ = false;
};

}  // namespace

std::unique_ptr<record_input> make_raw_reader(std::unique_ptr<chunk_buffer> input,
                                              std::string file, std::FILE* messages) {
  return std::make_unique<raw_record_input>(std::move(input), std::move(file), messages);
}

}  // namespace inspect
