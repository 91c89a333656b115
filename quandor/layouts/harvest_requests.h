#pragma once

// The requests of a harvest in the order it makes them, and every failure
// line it can write: declared once for the collector, which makes the
// requests and writes the lines, and for the desk tools, which read them
// back, name them and answer them again.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace layouts {

// What a failure line says went wrong.
enum class failure_kind : std::uint8_t {
  service_missing,  // no such service
  open_failed,      // the service would not open
  zero_connection,  // opened, but without a connection
  command_failed,   // the request was refused
  no_child,         // the profiler service has no client entry
  step_failed,      // the step's own line after one of the above
  device_missing,   // no HID device with the button's usage
  device_failed,    // the HID device could not be made or opened
};

// One place in the collector that writes a failure line.
struct failure_site {
  std::string_view module;  // "kelvra" or "varnel"
  std::int64_t line;        // the source line the failure line names
  const char* check;        // the failed check, as the line writes it
  bool message;             // the error text also stands as the message
  bool value;               // the line carries the request's result
  failure_kind kind;
};

// The source file each module's failure lines name.
struct module_source {
  std::string_view module;
  std::string_view source;
};
inline constexpr module_source module_sources[] = {
    {"kelvra", "kelvra/kelvra"},
    {"varnel", "quandor/varnel"},
};

// The access layer's one-shot command call (quandor/varnel).
inline constexpr failure_site no_service{"varnel", 2903, "service", false, false,
                                         failure_kind::service_missing};
inline constexpr failure_site open_failed{"varnel", 2906, "kr == 0 ", true, true,
                                          failure_kind::open_failed};
inline constexpr failure_site no_connection{"varnel", 2907, "connect", false, false,
                                            failure_kind::zero_connection};
inline constexpr failure_site call_failed{"varnel", 2910, "kr == 0 ", true, true,
                                          failure_kind::command_failed};
inline constexpr failure_site one_shot_sites[] = {no_service, open_failed, no_connection,
                                                  call_failed};

// The profile readers (quandor/varnel). The profiler's connection is opened
// quietly in a harvest, so its missing-service line never shows there.
inline constexpr failure_site events_failed{"varnel", 1871, "result == 0 ", false, true,
                                            failure_kind::step_failed};
inline constexpr failure_site profiler_no_service{"varnel", 1943, "service", false, false,
                                                  failure_kind::service_missing};
inline constexpr failure_site profiler_no_child{"varnel", 1946, "child", false, false,
                                                failure_kind::no_child};
inline constexpr failure_site profiler_open_failed{"varnel", 1949, "kr == 0 ", true, true,
                                                   failure_kind::open_failed};
inline constexpr failure_site profiler_failed{"varnel", 2239, "kr == 0 ", true, true,
                                              failure_kind::command_failed};
inline constexpr failure_site profiler_open_sites[] = {profiler_no_child, profiler_open_failed};

// The HID step's device (kelvra/kelvra). A description cannot make the first
// two fail: the usage pairs and the matching dictionary are always made.
inline constexpr failure_site hid_no_pairs{"kelvra", 211, "devicePairs", false, false,
                                           failure_kind::device_failed};
inline constexpr failure_site hid_no_matching{"kelvra", 215, "matching", false, false,
                                              failure_kind::device_failed};
inline constexpr failure_site hid_no_service{"kelvra", 221, "service", false, false,
                                             failure_kind::device_missing};
inline constexpr failure_site hid_no_device{"kelvra", 224, "device", false, false,
                                            failure_kind::device_failed};
inline constexpr failure_site hid_open_failed{"kelvra", 227, "result == 0 ", false, true,
                                              failure_kind::device_failed};
inline constexpr failure_site hid_device_sites[] = {hid_no_pairs, hid_no_matching,
                                                    hid_no_service, hid_no_device,
                                                    hid_open_failed};

// The collector's own line after a failed request (kelvra/kelvra).
constexpr failure_site step_site(std::int64_t line) {
  return {"kelvra", line, "kr == 0 ", false, true, failure_kind::step_failed};
}
constexpr failure_site report_site(std::int64_t line) {
  return {"kelvra", line, "result == 0 ", false, true, failure_kind::command_failed};
}

enum class request : std::uint8_t {
  stats,
  lyn_state,
  btmspk_state,
  button_counts,
  button_enables,
  profile_events,
  profiler_log,
  assets,
  hid_device,
  report_e0,
  report_b4,
  report_e1,
  report_e2,
  report_e3,
  report_e4,
};

// The five steps of a harvest, in order.
enum class harvest_step : std::uint8_t { stats, state_dumps, profile, assets, hid_reports };

// How a request reaches the phone.
enum class request_path : std::uint8_t {
  one_shot,   // a command call that opens, asks and closes (one_shot_sites)
  profiler,   // the profiler's held connection, a method selector
  hid_device, // making and opening the HID device
  hid_report, // one feature report of the open device
};

struct harvest_request {
  request id;
  harvest_step step;
  request_path path;
  std::string_view service;    // as the collector names it; "" for the HID device
  std::uint32_t command;       // the command, the profiler's selector or the report id
  std::size_t capacity;        // the reply buffer offered, bytes
  unsigned passes;             // the most times one harvest asks it
  std::string_view banner;     // "" where none
  bool banner_first;           // written before the request, else after its success
  failure_site step_failure;   // the line after it fails; line 0 where none
  std::string_view label;      // for people
  std::string_view lost;       // what a capture lacks when it fails
  std::string_view report_key; // its name in the report
  std::string_view phone_entry;  // the description entry that answers it; "" for HID
};

inline constexpr failure_site no_step_failure{"", 0, "", false, false, failure_kind::step_failed};

// In harvest order; request r is row r.
inline constexpr harvest_request harvest_requests[] = {
    {request::stats, harvest_step::stats, request_path::one_shot, "zol-button", 215, 2000, 1,
     "==========kelvra get-stats==============", false, step_site(130),
     "statistics of the last press (command 215 on zol-button)",
     "no statistics record: the press is unknown", "zol-button 0xd7", "ZOL_zol-button"},
    {request::lyn_state, harvest_step::state_dumps, request_path::one_shot, "lyn", 208, 4096, 1,
     "==========kelvra lyn 0xd0==============", true, step_site(148),
     "state of lyn (command 208)", "no lyn state dump", "lyn 0xd0", "ZOL_lyn"},
    {request::btmspk_state, harvest_step::state_dumps, request_path::one_shot, "btmspk", 208,
     4096, 1, "==========kelvra btmspk 0xd0==============", true, step_site(153),
     "state of btmspk (command 208)", "no btmspk state dump", "btmspk 0xd0", "ZOL_btmspk"},
    {request::button_counts, harvest_step::state_dumps, request_path::one_shot, "zol-button",
     208, 4096, 1, "==========kelvra zol-button 0xd0==============", true, step_site(159),
     "MCLK counts of zol-button (command 208)", "no MCLK counts", "zol-button 0xd0",
     "ZOL_zol-button"},
    {request::button_enables, harvest_step::state_dumps, request_path::one_shot, "zol-button",
     209, 4096, 1, "==========kelvra zol-button 0xd1==============", true, step_site(164),
     "PellamEN counts of zol-button (command 209)", "no PellamEN counts", "zol-button 0xd1",
     "ZOL_zol-button"},
    {request::profile_events, harvest_step::profile, request_path::one_shot, "profile", 209,
     0x10000, 10, "==========kelvra zol-button profile==============", true, events_failed,
     "profile events (command 209 on profile)",
     "records of the profile service are missing or cut short", "profile 0xd1", "ZOL_profile"},
    {request::profiler_log, harvest_step::profile, request_path::profiler, "ZOL_profile", 9,
     48000, 10, "", true, no_step_failure, "profiler log (selector 9 on ZOL_profile)",
     "records of the profiler log are missing or cut short", "ZOL_profile selector 9",
     "ZOL_profiler"},
    {request::assets, harvest_step::assets, request_path::one_shot, "zol-button", 216, 4096, 1,
     "==========kelvra zol-button get-assets==============", false, step_site(189),
     "haptic asset table (command 216 on zol-button)", "no haptic asset table",
     "zol-button 0xd8", "ZOL_zol-button"},
    {request::hid_device, harvest_step::hid_reports, request_path::hid_device, "", 0, 0, 1, "",
     true, no_step_failure, "the button's HID device", "no HID feature reports", "HID device",
     ""},
    {request::report_e0, harvest_step::hid_reports, request_path::hid_report, "", 0xe0, 256, 1,
     "==============feedscope get 0xe0 -u 0xFF00,0x0020===============", true,
     report_site(232), "HID feature report 0xe0", "this report is missing", "HID report 0xe0",
     ""},
    {request::report_b4, harvest_step::hid_reports, request_path::hid_report, "", 0xb4, 256, 1,
     "==============feedscope get 0xb4 -u 0xFF00,0x0020===============", true,
     report_site(238), "HID feature report 0xb4", "this report is missing", "HID report 0xb4",
     ""},
    {request::report_e1, harvest_step::hid_reports, request_path::hid_report, "", 0xe1, 256, 1,
     "==============feedscope get 0xe1 -u 0xFF00,0x0020===============", true,
     report_site(244), "HID feature report 0xe1", "this report is missing", "HID report 0xe1",
     ""},
    {request::report_e2, harvest_step::hid_reports, request_path::hid_report, "", 0xe2, 256, 1,
     "==============feedscope get 0xe2 -u 0xFF00,0x0020===============", true,
     report_site(250), "HID feature report 0xe2", "this report is missing", "HID report 0xe2",
     ""},
    {request::report_e3, harvest_step::hid_reports, request_path::hid_report, "", 0xe3, 256, 1,
     "==============feedscope get 0xe3 -u 0xFF00,0x0020===============", true,
     report_site(256), "HID feature report 0xe3", "this report is missing", "HID report 0xe3",
     ""},
    {request::report_e4, harvest_step::hid_reports, request_path::hid_report, "", 0xe4, 256, 1,
     "==============feedscope get 0xe4 -u 0xFF00,0x0020===============", true,
     report_site(262), "HID feature report 0xe4", "this report is missing", "HID report 0xe4",
     ""},
};

constexpr const harvest_request& request_row(request id) {
  return harvest_requests[static_cast<std::size_t>(id)];
}

// The rows of one step, contiguous in harvest order.
constexpr std::span<const harvest_request> step_requests(harvest_step step) {
  std::size_t first = 0;
  while (first < std::size(harvest_requests) && harvest_requests[first].step != step) ++first;
  std::size_t end = first;
  while (end < std::size(harvest_requests) && harvest_requests[end].step == step) ++end;
  return std::span<const harvest_request>(harvest_requests).subspan(first, end - first);
}

static_assert([] {
  for (std::size_t i = 0; i < std::size(harvest_requests); ++i)
    if (static_cast<std::size_t>(harvest_requests[i].id) != i) return false;
  return true;
}());

}  // namespace layouts
