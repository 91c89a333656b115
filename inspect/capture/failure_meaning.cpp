#include "inspect/capture/failure_meaning.h"

#include <array>
#include <cstdio>

namespace inspect {
namespace {

struct request_text {
  request about;
  std::string_view label;
  std::string_view lost;  // what the capture lacks when it fails
};

constexpr request_text request_texts[] = {
    {request::stats, "statistics of the last press (command 215 on zol-button)",
     "no statistics record: the press is unknown"},
    {request::lyn_state, "state of lyn (command 208)", "no lyn state dump"},
    {request::btmspk_state, "state of btmspk (command 208)", "no btmspk state dump"},
    {request::button_counts, "MCLK counts of zol-button (command 208)", "no MCLK counts"},
    {request::button_enables, "PellamEN counts of zol-button (command 209)",
     "no PellamEN counts"},
    {request::profile_events, "profile events (command 209 on profile)",
     "records of the profile service are missing or cut short"},
    {request::profiler_log, "profiler log (selector 9 on ZOL_profile)",
     "records of the profiler log are missing or cut short"},
    {request::assets, "haptic asset table (command 216 on zol-button)", "no haptic asset table"},
    {request::hid_device, "the button's HID device", "no HID feature reports"},
    {request::hid_report, "HID feature report", "this report is missing"},
};

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

const request_text& request_row(request about) {
  for (const request_text& row : request_texts)
    if (row.about == about) return row;
  return request_texts[0];
}

const kind_text& kind_row(failure_kind kind) {
  for (const kind_text& row : kind_texts)
    if (row.kind == kind) return row;
  return kind_texts[0];
}

}  // namespace

std::string request_label(const failure_line& failure) {
  std::string label(request_row(failure.about).label);
  if (failure.about == request::hid_report) {
    char id[8];
    std::snprintf(id, sizeof id, " 0x%02x", failure.report_id);
    label += id;
  }
  return label;
}

std::string_view kind_key(failure_kind kind) noexcept { return kind_row(kind).key; }

std::string_view kind_label(failure_kind kind) noexcept { return kind_row(kind).label; }

std::string failure_meaning(const failure_line& failure) {
  std::string text = request_label(failure) + ": " + std::string(kind_label(failure.kind));
  if (failure.value != 0) {
    char value[16];
    std::snprintf(value, sizeof value, "0x%08x", failure.value);
    text += " (result ";
    text += value;
    if (!failure.error_text.empty() && failure.error_text != "(null)")
      text += ", " + failure.error_text;
    else
      text += ", which the phone has no text for";
    text += ")";
  }
  text += "; ";
  text += request_row(failure.about).lost;
  return text;
}

}  // namespace inspect
