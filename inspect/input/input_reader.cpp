#include "inspect/input/input_reader.h"

#include "inspect/input/line_reader.h"
#include "inspect/input/line_tokens.h"

namespace inspect {
namespace {

class line_record_reader final : public record_reader {
 public:
  line_record_reader(input_form form, std::unique_ptr<chunk_buffer> input, damage_log& damage)
      : tokens_(form, std::move(input), damage, true) {}

  bool next(input_record& record) override {
    line_token token;
    if (!tokens_.next(token)) return false;
    record = token.record;
    return true;
  }

  bool found_form() const override { return tokens_.saw_form_line(); }

 private:
  token_reader tokens_;
};

}  // namespace

std::optional<opened_input> open_input(std::unique_ptr<byte_source> source, const std::string& file,
                                       const input_settings& settings, input_fault& fault) {
  static_assert(line_reader::kept_bytes >= detection_size);
  opened_input input;
  input.buffer = std::make_unique<chunk_buffer>(std::move(source), line_reader::kept_bytes,
                                                input_label(file), settings.progress);
  chunk_buffer& buffer = *input.buffer;
  while (buffer.data().size() < detection_size && buffer.refill()) {
  }
  if (buffer.data().empty()) {
    fault = {file, "", buffer.read_fault() ? *buffer.read_fault() : "empty: no capture in it"};
    return std::nullopt;
  }
  if (settings.form) {
    input.form = *settings.form;
    return input;
  }
  const std::optional<input_form> form = detect_form(buffer.data());
  if (!form) {
    fault = {file, "", "not a capture: " + std::string(forms_looked_for) +
                           " in its first 64 KiB (--from names the form)"};
    return std::nullopt;
  }
  input.form = *form;
  return input;
}

std::unique_ptr<record_reader> read_records(opened_input input, damage_log& damage) {
  if (input.form == input_form::raw) return read_raw_records(std::move(input.buffer), damage);
  return std::make_unique<line_record_reader>(input.form, std::move(input.buffer), damage);
}

}  // namespace inspect
