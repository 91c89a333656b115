#pragma once

// A harvest capture read back whole: what each step printed, as the reply
// bytes that printed it, and every failure line, in the order of the capture.
// Which profile source a record came from does not show in the text; the
// model keeps the records in order and only where a failure line splits them.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "liblog_zol/clock_source.h"

namespace inspect {

// The request a failure line or a printed block belongs to.
enum class request {
  stats,           // 215 on "zol-button"
  lyn_state,       // 208 on "lyn"
  btmspk_state,    // 208 on "btmspk"
  button_counts,   // 208 on "zol-button"
  button_enables,  // 209 on "zol-button"
  profile_events,  // 209 on "profile", up to ten passes
  profiler_log,    // selector 9 on the child of "ZOL_profile"
  assets,          // 216 on "zol-button"
  hid_device,      // matching, creating and opening the HID device
  hid_report,      // one feature report
};

// What a failure line says went wrong.
enum class failure_kind {
  service_missing,   // no such service
  open_failed,       // the service would not open
  zero_connection,   // opened, but without a connection
  command_failed,    // the request was refused
  no_child,          // the profiler service has no client entry
  step_failed,       // the step's own line after one of the above
  device_missing,    // no HID device with the button's usage
  device_failed,     // the HID device could not be made or opened
};

struct failure_line {
  std::uint64_t line = 0;  // in the capture, from 1
  request about = request::stats;
  failure_kind kind = failure_kind::step_failed;
  std::uint8_t report_id = 0;  // hid_report only
  std::string module;          // "kelvra" or "varnel"
  std::string check;           // "kr == 0 ", "service", ...; empty when none
  std::string source;          // "kelvra/kelvra" or "quandor/varnel"
  std::int64_t source_line = 0;
  std::uint32_t value = 0;     // the result it carries; 0 when none
  std::string error_text;      // the platform's text for `value`
  std::string text;            // the whole line
};

struct stats_block {
  std::uint64_t line = 0;  // of the banner
  std::array<std::uint8_t, 282> record{};
  bool printed = false;    // false: the reply was empty
};

struct state_dump {
  request about = request::lyn_state;
  std::uint64_t line = 0;  // of the banner
  std::optional<std::vector<std::uint8_t>> record;  // none: nothing printed
};

struct profile_entry {
  std::uint64_t line = 0;
  std::array<std::uint8_t, 48> bytes{};
  std::optional<std::string> calendar_text;
};

struct assets_block {
  std::uint64_t line = 0;  // of the banner
  std::uint64_t length = 0;  // as the length line gives it; 0 when nothing printed
  std::array<std::uint8_t, 1200> table{};
};

struct hid_report {
  std::uint8_t id = 0;
  std::uint64_t line = 0;  // of the banner
  std::vector<std::uint8_t> bytes;  // empty when the dump printed nothing
  bool failed = false;              // a failure line followed the banner
};

// One device call as the capture shows it, in the order they were made.
enum class call_outcome {
  reply,            // answered; `reply` holds the bytes to deliver
  refused,          // a non-zero result, `value`
  missing,          // no service (or HID device) to ask
  open_failed,      // the service or device would not open, `value`
  zero_connection,  // opened without a connection
  no_child,         // the profiler service has no client entry
  not_created,      // the HID device could not be made
};

struct device_call {
  request about = request::stats;
  std::uint8_t report_id = 0;  // hid_report only
  call_outcome outcome = call_outcome::reply;
  std::uint32_t value = 0;
  std::vector<std::uint8_t> reply;
  std::uint64_t line = 0;  // where the capture shows it
};

struct harvest_model {
  std::uint64_t line = 0;  // where this harvest starts
  std::optional<stats_block> stats;
  std::vector<state_dump> states;  // in request order, as far as they ran
  bool profile_banner = false;
  std::vector<profile_entry> profile;
  // Records before this index came from the "profile" service, when a
  // failure line or a full run of passes says so.
  std::optional<std::size_t> events_end;
  std::optional<assets_block> assets;
  std::vector<hid_report> hid;
  std::vector<failure_line> failures;
  std::vector<device_call> calls;
};

struct capture_model {
  std::vector<harvest_model> harvests;
  bool has_stderr = false;  // any failure line seen
  // The timesync pair the calendar texts give back; none without texts.
  std::optional<zol::timesync_pair> timesync;
};

}  // namespace inspect
