#include "inspect/capture/failure_meaning.h"

#include "inspect/capture/number_text.h"

namespace inspect {
namespace {

struct kind_text {
  failure_kind kind;
  std::string_view key;
  std::string_view label;
};

constexpr kind_text kind_texts[] = {
    {failure_kind::service_missing, "service_missing", "the service is not on the phone"},
    {failure_kind::open_failed, "open_failed", "the service would not open"},
    {failure_kind::zero_connection, "zero_connection", "the service opened without a connection"},
    {failure_kind::command_failed, "command_failed", "the request was refused"},
    {failure_kind::no_child, "no_child", "the profiler service has no client entry"},
    {failure_kind::step_failed, "step_failed", "the step gave up after the line before"},
    {failure_kind::device_missing, "device_missing", "no HID device has the button's usage"},
    {failure_kind::device_failed, "device_failed", "the HID device could not be made or opened"},
};

const kind_text& kind_row(failure_kind kind) {
  for (const kind_text& row : kind_texts)
    if (row.kind == kind) return row;
  return kind_texts[0];
}

}  // namespace

std::string_view kind_key(failure_kind kind) noexcept { return kind_row(kind).key; }

std::string_view kind_label(failure_kind kind) noexcept { return kind_row(kind).label; }

std::string failure_meaning(const failure_line& failure) {
  const layouts::harvest_request& row = layouts::request_row(failure.about);
  std::string text = std::string(row.label) + ": " + std::string(kind_label(failure.kind));
  if (failure.value != 0) {
    text += " (result ";
    text += hex_text(failure.value);
    if (!failure.error_text.empty() && failure.error_text != "(null)")
      text += ", " + failure.error_text;
    else
      text += ", which the phone has no text for";
    text += ")";
  }
  text += "; ";
  text += row.lost;
  return text;
}

}  // namespace inspect
