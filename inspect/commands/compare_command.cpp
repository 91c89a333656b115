// kelvra-inspect compare: two captures read into their models, compared,
// printed; the status a gate reads, as diff and cmp give it.

#include <cstdio>
#include <string>

#include "inspect/commands/commands.h"
#include "inspect/outputs/compare_printer.h"
#include "inspect/outputs/output_buffer.h"

namespace inspect {
namespace {

constexpr int agree_status = 0;
constexpr int differ_status = 1;
constexpr int unreadable_status = 2;

// False after the fault line: the capture cannot be read, or lacks the
// harvest asked for. A damaged capture is read as far as it goes.
bool read_side(const std::string& path, const std::optional<std::string>& member,
               std::size_t harvest, const capture_options& reading, capture_model& model) {
  single_input input;
  if (!open_single(path, member, reading.archive, whole_forms, input)) return false;
  input_fault fault;
  const bool read =
      read_capture(std::move(input.capture.source), input.capture.label, reading, model, fault);
  if (finish_single(input, 0) == 2) return false;
  if (!read) {
    std::fprintf(stderr, "%s\n", fault_line(fault).c_str());
    return false;
  }
  const std::size_t harvests = model.harvests.size();
  if (harvest != 0 && harvest <= harvests) return true;
  std::fprintf(stderr, "kelvra-inspect: %s: the capture holds %zu harvest%s; there is no %zu\n",
               input_label(input.capture.label).c_str(), harvests, harvests == 1 ? "" : "s", harvest);
  return false;
}

}  // namespace

int run_compare(const compare_settings& settings) {
  if (settings.input_a == "-" && settings.input_b == "-") {
    std::fprintf(stderr, "kelvra-inspect: compare reads standard input for one capture only\n");
    return unreadable_status;
  }
  capture_model a, b;
  if (!read_side(settings.input_a, settings.member_a, settings.harvest_a, settings.reading, a) ||
      !read_side(settings.input_b, settings.member_b, settings.harvest_b, settings.reading, b))
    return unreadable_status;
  const comparison c =
      compare_captures(a, settings.harvest_a - 1, b, settings.harvest_b - 1, settings.options);
  std::string text;
  switch (settings.shape) {
    case compare_settings::form::text: write_comparison(c, *text_compare_printer(text)); break;
    case compare_settings::form::json: write_comparison(c, *json_compare_printer(text)); break;
    case compare_settings::form::page: write_comparison(c, *page_compare_printer(text)); break;
  }
  if (write_output(settings.output, text) != 0) return unreadable_status;
  return c.agree() ? agree_status : differ_status;
}

}  // namespace inspect
