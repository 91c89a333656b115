#include "inspect/input/chunk_buffer.h"
#include "inspect/input/form_detection.h"
#include "inspect/input/harvest_reader.h"
#include "inspect/input/hex_reader.h"
#include "inspect/input/line_reader.h"
#include "inspect/input/raw_reader.h"
#include "inspect/input/record_input.h"

namespace inspect {

std::unique_ptr<record_input> open_records(std::unique_ptr<byte_source> source,
                                           std::string file, const input_options& options) {
  static_assert(line_reader::kept_bytes >= detection_size);
  if (!source) source = memory_source({});
  auto input = std::make_unique<chunk_buffer>(std::move(source), line_reader::kept_bytes,
                                              input_label(file), options);
  input_form form = input_form::harvest;
  if (options.form) {
    form = *options.form;
  } else {
    while (input->data().size() < detection_size && input->refill()) {
    }
    form = detect_form(input->data());
  }
  switch (form) {
    case input_form::hex:
      return make_hex_reader(std::move(input), std::move(file));
    case input_form::raw:
      return make_raw_reader(std::move(input), std::move(file), options.messages);
    case input_form::harvest:
      break;
  }
  return make_harvest_reader(std::move(input), std::move(file));
}

}  // namespace inspect
