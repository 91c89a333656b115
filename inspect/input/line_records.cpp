#include "inspect/input/line_records.h"

#include "inspect/input/line_reader.h"

namespace inspect {

namespace {

class line_record_input final : public record_input {
 public:
  line_record_input(input_form form, std::string_view line_start, line_parser parse,
                    std::unique_ptr<chunk_buffer> input, std::string file)
      : form_(form),
        line_start_(line_start),
        parse_(parse),
        input_(std::move(input)),
        lines_(*input_),
        file_(std::move(file)) {}

  bool next(input_record& record) override {
    if (ended_) return false;
    text_line line;
    while (lines_.next(line)) {
      if (!line.text.starts_with(line_start_)) continue;
      if (line.too_long) return fail(line.number, "line longer than 65536 bytes");
      record.line = line.number;
      record.offset = 0;
      record.calendar_text.reset();
      if (!parse_(line.text, record, message_)) return fail(line.number, std::move(message_));
      return true;
    }
    ended_ = true;
    if (const auto& read_fault = input_->read_fault()) fault_ = input_fault{file_, "", *read_fault};
    return false;
  }

  const std::optional<input_fault>& fault() const override { return fault_; }
  input_form form() const override { return form_; }

 private:
  bool fail(std::uint64_t line, std::string message) {
    ended_ = true;
    input_->stop();
    fault_ = input_fault{file_, "line " + std::to_string(line), std::move(message)};
    return false;
  }

  input_form form_;
  std::string_view line_start_;
  line_parser parse_;
  std::unique_ptr<chunk_buffer> input_;
  line_reader lines_;
  std::string file_;
  std::string message_;
  std::optional<input_fault> fault_;
  bool ended_ = false;
};

}  // namespace

std::unique_ptr<record_input> make_line_records(input_form form, std::string_view line_start,
                                                line_parser parse,
                                                std::unique_ptr<chunk_buffer> input,
                                                std::string file) {
  return std::make_unique<line_record_input>(form, line_start, parse, std::move(input),
                                             std::move(file));
}

}  // namespace inspect
