#pragma once

// A harvest capture read back whole: what each step printed, as the reply
// bytes that printed it, every failure line, the damage met on the way, the
// clock pair of its calendar times, and the facts every output reads (the
// source of each record, the press, the tracks, the sequence runs), each
// found once when the capture is read.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "inspect/capture/capture_clock.h"
#include "inspect/capture/capture_facts.h"
#include "inspect/input/input_damage.h"
#include "liblog_zol/clock_source.h"
#include "liblog_zol/local_zone.h"
#include "quandor/layouts/harvest_requests.h"

namespace inspect {

using layouts::failure_kind;
using layouts::request;

struct failure_line {
  std::uint64_t line = 0;  // in the capture, from 1
  request about = request::stats;
  failure_kind kind = failure_kind::step_failed;
  std::string module;       // "kelvra" or "varnel"
  std::string check;        // "kr == 0 ", "service", ...
  std::string source;       // "kelvra/kelvra" or "quandor/varnel"
  std::int64_t source_line = 0;
  std::uint32_t value = 0;  // the result it carries; 0 when none
  std::string error_text;   // the platform's text for `value`
  std::string text;         // the whole line
  std::string meaning;      // what it means for the capture, for people
};

struct stats_block {
  std::uint64_t line = 0;  // of the banner
  std::array<std::uint8_t, 282> record{};
  bool printed = false;    // false: the reply was empty, or its block is damaged
  bool damaged = false;
};

struct state_dump {
  request about = request::lyn_state;
  std::uint64_t line = 0;  // of the banner
  std::optional<std::vector<std::uint8_t>> record;  // none: nothing printed
  bool damaged = false;
};

struct profile_entry {
  std::uint64_t line = 0;
  std::uint64_t last_line = 0;  // a text with line ends runs over several
  std::array<std::uint8_t, 48> bytes{};
  bool has_calendar_text = false;  // the line gave a calendar time (the clock reads it)
};

struct assets_block {
  std::uint64_t line = 0;    // of the banner
  std::uint64_t length = 0;  // as the length line gives it; 0 when nothing printed
  std::array<std::uint8_t, 1200> table{};
  bool damaged = false;
};

struct hid_report {
  request about = request::report_e0;
  std::uint64_t line = 0;           // of the banner
  std::vector<std::uint8_t> bytes;  // empty when the dump printed nothing
  bool failed = false;              // a failure line followed the banner
  bool damaged = false;

  std::uint8_t id() const noexcept {
    return static_cast<std::uint8_t>(layouts::request_row(about).command);
  }
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
  // failure line, a full run of passes or the sequence numbers say so.
  std::optional<std::size_t> events_end;
  std::optional<assets_block> assets;
  std::vector<hid_report> hid;
  std::vector<failure_line> failures;
  std::vector<device_call> calls;
  // Where the capture ends inside this harvest, for people; empty when the
  // harvest is whole.
  std::string cut;
  harvest_facts facts;
};

struct capture_model {
  std::string input;  // as the user named it; "-" for standard input
  std::vector<harvest_model> harvests;
  bool has_stderr = false;  // any failure line seen
  // The clock pair of the calendar texts, recovered; or --timesync.
  recovered_clock clock;
  std::optional<zol::timesync_pair> pair;
  bool pair_given = false;  // --timesync
  // The zone the calendar texts were printed in.
  const zol::local_zone* zone = &zol::c_library_zone();
  std::vector<inspect::problem> damage;
  bool lost = false;  // some damage lost part of the capture
};

}  // namespace inspect
