// Every request of `kelvra --harvest`, failed in every way the phone can fail
// it, one fault at a time on the default phone: the run still ends with status
// 0, writes exactly the failure lines of that fault, runs every later step and
// gives back everything it obtained from the platform.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "expected_output.h"
#include "tmxsim/control.h"

namespace {

using json = nlohmann::ordered_json;

constexpr kern_return_t rejected = kIOReturnNotPermitted;
constexpr kern_return_t unsupported = kIOReturnUnsupported;
constexpr kern_return_t no_connection = MACH_SEND_INVALID_DEST;
constexpr kern_return_t without_text = -1;

const failure null_connection{true, "connect", 2907};

const std::vector<banner> all_hid_banners = {hid_e0, hid_b4, hid_e1, hid_e2, hid_e3, hid_e4};

// Decoded profile lines of the default phone, each log in one pass and an
// empty one after it: 303 records from "profile", 163 from the profiler
// connection.
constexpr int event_lines = 303;
constexpr int profiler_lines = 163;
constexpr int all_profile_lines = event_lines + profiler_lines;
constexpr int full_event_passes = 10 * (65536 / 48);

// ---------------------------------------------------------------------------
// Changes to the default phone.

// One change: the item at `path` of the service named `service` ("" for the
// phone itself) set to `value`, or removed when there is no value.
struct edit {
  std::string service;
  std::string path;
  std::optional<json> value = std::nullopt;
};

json default_phone_with(const std::vector<edit>& edits) {
  json phone = json::parse(tmxsim::default_description());
  for (const edit& e : edits) {
    json* base = e.service.empty() ? &phone : nullptr;
    for (json& entry : phone["services"])
      if (entry.value("name", "") == e.service) base = &entry;
    if (base == nullptr) throw std::logic_error("no service " + e.service);
    const json::json_pointer at(e.path);
    if (e.value)
      (*base)[at] = *e.value;
    else
      (*base)[at.parent_pointer()].erase(at.back());
  }
  return phone;
}

json code(kern_return_t error) { return static_cast<std::uint32_t>(error); }
json result(kern_return_t error) { return {{"result", code(error)}}; }
json reply_of_size(std::size_t size) {
  return {{"fields", json::array({json{{"zeros", size}}})}};
}
const json short_reply = {{"reply", "5a a5 5a"}};
const json empty_reply = {{"reply", ""}};
// More than any request offers: 65,536 bytes is the largest capacity.
const json over_long_reply = reply_of_size(70000);

// ---------------------------------------------------------------------------
// The table.

struct fault {
  std::string name;
  std::vector<edit> edits;
  failures expected;
  std::vector<banner> absent;
  int profile_lines = all_profile_lines;
  std::vector<std::string> shown = {};  // texts the output must hold, in this order
};

// The services asked through the one-shot command call, the steps that ask
// them and what their failure skips. Another class hides a service from the
// command call; "ZOL_profile" stays visible to the profiler's lookup by name.
struct service_user {
  std::string name;
  const char* service;
  failures steps;
  std::vector<banner> skipped;
  int requests;  // made through a zero connection
  int profile_lines_if_failed = all_profile_lines;
  int profile_lines_if_null = all_profile_lines;
  std::string shown_if_null = "";
};

const service_user service_users[] = {
    // A zero connection counts as success: the steps print what their
    // buffers hold, with the capacity as length.
    {"button", "ZOL_zol-button", {stats_step, button_d0_step, assets_step},
     {stats, button_d1, assets}, 4, all_profile_lines, all_profile_lines,
     banners({assets}) + "Length: 4096, expected 1200\n"},
    {"lyn", "ZOL_lyn", {lyn_step}, {btmspk, button_d0, button_d1}, 1},
    {"btmspk", "ZOL_btmspk", {btmspk_step}, {button_d0, button_d1}, 1},
    // The event reader asks 10 times and takes the untouched length as delivered.
    {"events", "ZOL_profile", {events_step}, {}, 10, profiler_lines,
     full_event_passes + profiler_lines},
};

// The one-shot requests of the sequence and what their failure skips.
struct request {
  std::string name;
  const char* service;
  const char* command;
  failure on_failure;
  std::vector<banner> skipped;
};

const request one_shot_requests[] = {
    {"stats", "ZOL_zol-button", "/commands/215", stats_step, {stats}},
    {"lyn_state", "ZOL_lyn", "/commands/208", lyn_step, {btmspk, button_d0, button_d1}},
    {"btmspk_state", "ZOL_btmspk", "/commands/208", btmspk_step, {button_d0, button_d1}},
    {"button_state_d0", "ZOL_zol-button", "/commands/208", button_d0_step, {button_d1}},
    {"button_state_d1", "ZOL_zol-button", "/commands/209", button_d1_step, {}},
    {"assets", "ZOL_zol-button", "/commands/216", assets_step, {assets}},
};

// The feature reports in the order they are read, and the line of each one's failure.
const std::pair<std::string, long> hid_reports[] = {
    {"224", 232}, {"180", 238}, {"225", 244}, {"226", 250}, {"227", 256}, {"228", 262}};

std::vector<fault> all_faults() {
  std::vector<fault> table = {
      // What each step prints first, after its banner.
      {"none", {}, {}, {}, all_profile_lines,
       {banners({stats}) + "pkey_stats", banners({lyn}) + "lyn State",
        banners({btmspk}) + "btmspk State", banners({button_d0}) + "PKEY MCLK Counts",
        banners({button_d1}) + "PKEY PellamEN Counts", banners({profile}) + "{ ",
        banners({assets}) + "Length: 1200, expected 1200\n",
        banners({hid_e0}) + "00000000: ", banners({hid_b4}) + "00000000: ",
        banners({hid_e1}) + "00000000: ", banners({hid_e2}) + "00000000: ",
        banners({hid_e3}) + "00000000: ", banners({hid_e4}) + "00000000: "}},

      // One buffer serves the state dumps, and each request is offered what
      // the previous one delivered; the rest stays as zeroed at the start.
      {"lyn_state_empty_reply_leaves_later_requests_no_capacity",
       {{"ZOL_lyn", "/commands/208", empty_reply}}, {}, {}, all_profile_lines,
       {banners({lyn, btmspk, button_d0, button_d1, profile})}},
      {"lyn_state_5_byte_reply_caps_later_requests",
       {{"ZOL_lyn", "/commands/208", json::parse(R"({"fields": [{"u32": 1}, {"u8": 2}]})")}},
       {}, {}, all_profile_lines,
       {banners({lyn}) + "lyn State\npower state   : 1\nAP request    : 2\nZOL request   : 0\n" +
        banners({btmspk}) +
        "btmspk State\npower state   : 2\nAP request    : 42\nZOL request   : 0\n" +
        banners({button_d0}) +
        "PKEY MCLK Counts\nEnable        : 1\nAP ref        : 0\nZOL ref       : 2\n" +
        banners({button_d1}) +
        "PKEY PellamEN Counts\nEnable        : 1\nAP ref        : 0\nZOL ref       : 1\n" +
        banners({profile})}},

      // The event reader: command 209 of "profile", up to 10 passes.
      {"events_rejected", {{"ZOL_profile", "/commands/209", result(rejected)}},
       command_failed(events_step, rejected), {}, profiler_lines},
      {"events_fail_in_second_pass", {{"ZOL_profile", "/commands/209/1", result(rejected)}},
       command_failed(events_step, rejected), {}, all_profile_lines},
      // Too short for a record, but not an end: all 10 passes are made.
      {"events_short_reply", {{"ZOL_profile", "/commands/209", reply_of_size(20)}},
       {}, {}, profiler_lines},
      {"events_over_long_reply", {{"ZOL_profile", "/commands/209", over_long_reply}},
       {}, {}, full_event_passes + profiler_lines},

      // The profiler connection: "ZOL_profile" opened through its child,
      // method 9, up to 10 passes. A missing service is passed over quietly.
      {"profiler_service_missing", {{"ZOL_profile", "/name", "profile"}}, {}, {}, event_lines},
      {"profiler_without_child", {{"ZOL_profile", "/children"}},
       {{true, "child", 1946}}, {}, event_lines},
      {"profiler_open_rejected",
       {{"ZOL_profile", "/children/0/open_result", code(rejected)}},
       {{true, "kr == 0 ", 1949, rejected}}, {}, event_lines},
      {"profiler_null_connection", {{"ZOL_profile", "/children/0/null_connection", true}},
       {{true, "kr == 0 ", 2239, no_connection}}, {}, event_lines},
      {"profiler_rejected", {{"ZOL_profile", "/children/0/methods/9", result(rejected)}},
       {{true, "kr == 0 ", 2239, rejected}}, {}, event_lines},
      {"profiler_fails_in_second_pass",
       {{"ZOL_profile", "/children/0/methods/9/1", result(rejected)}},
       {{true, "kr == 0 ", 2239, rejected}}, {}, all_profile_lines},
      {"profiler_short_reply", {{"ZOL_profile", "/children/0/methods/9", reply_of_size(20)}},
       {}, {}, event_lines},
      {"profiler_over_long_reply", {{"ZOL_profile", "/children/0/methods/9", over_long_reply}},
       {}, {}, event_lines + 10 * (48000 / 48)},

      // The HID device.
      {"hid_device_missing", {{"", "/hid_devices"}}, {hid_missing}, all_hid_banners},
      {"hid_device_of_another_usage", {{"", "/hid_devices/0/usage", 0x21}}, {hid_missing},
       all_hid_banners},
      {"hid_device_not_creatable", {{"", "/hid_devices/0/create", false}},
       {{false, "device", 224}}, all_hid_banners},
      {"hid_open_rejected", {{"", "/hid_devices/0/open_result", code(rejected)}},
       {{false, "result == 0 ", 227, rejected}}, all_hid_banners},
      {"hid_report_empty", {{"", "/hid_devices/0/reports/180", empty_reply}}, {}, {}},
      // A dump prints what was delivered; an empty report leaves the next its room.
      {"hid_reports_empty_then_33_bytes",
       {{"", "/hid_devices/0/reports/224", empty_reply},
        {"", "/hid_devices/0/reports/180", json::parse(R"({"fields": [
             {"text": "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefg", "size": 33}]})")}},
       {}, {}, all_profile_lines,
       {banners({hid_e0, hid_b4}) +
        "00000000: 41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50  | ABCDEFGH IJKLMNOP\n"
        "00000010: 51 52 53 54 55 56 57 58  59 5a 61 62 63 64 65 66  | QRSTUVWX YZabcdef\n"
        "00000020: 67 " + std::string(46, ' ') + " | g\n" + banners({hid_e1})}},

      // After the first line with an error value, line numbers are hex; a
      // result the platform has no text for stops no later line.
      {"result_without_text_then_hex_line_numbers",
       {{"ZOL_zol-button", "/commands/215", result(without_text)}, {"", "/hid_devices"}},
       command_failed(stats_step, without_text) + failures{hid_missing},
       {stats, hid_e0, hid_b4, hid_e1, hid_e2, hid_e3, hid_e4}},
  };
  for (const service_user& u : service_users) {
    failures refused;
    for (const failure& step : u.steps) refused = refused + open_rejected(step, rejected);
    table.push_back({u.name + "_service_missing", {{u.service, "/class", "Other"}},
                     services_missing(u.steps), u.skipped, u.profile_lines_if_failed});
    table.push_back({u.name + "_open_rejected", {{u.service, "/open_result", code(rejected)}},
                     refused, u.skipped, u.profile_lines_if_failed});
    table.push_back({u.name + "_null_connection", {{u.service, "/null_connection", true}},
                     failures(u.requests, null_connection), {}, u.profile_lines_if_null,
                     {u.shown_if_null}});
  }
  for (const request& r : one_shot_requests) {
    table.push_back({r.name + "_rejected", {{r.service, r.command, result(rejected)}},
                     command_failed(r.on_failure, rejected), r.skipped});
    table.push_back({r.name + "_not_answered", {{r.service, r.command}},
                     command_failed(r.on_failure, unsupported), r.skipped});
    table.push_back({r.name + "_empty_reply", {{r.service, r.command, empty_reply}}, {}, {}});
    table.push_back({r.name + "_short_reply", {{r.service, r.command, short_reply}}, {}, {}});
    table.push_back(
        {r.name + "_over_long_reply", {{r.service, r.command, over_long_reply}}, {}, {}});
  }
  for (std::size_t i = 0; i < std::size(hid_reports); ++i) {
    const auto& [key, line] = hid_reports[i];
    const std::string path = "/hid_devices/0/reports/" + key;
    const std::vector<banner> later(all_hid_banners.begin() + static_cast<long>(i) + 1,
                                    all_hid_banners.end());
    table.push_back({"hid_report_" + key + "_rejected", {{"", path, result(rejected)}},
                     {{false, "result == 0 ", line, rejected}}, later});
    table.push_back({"hid_report_" + key + "_over_long", {{"", path, reply_of_size(300)}}, {}, {}});
  }
  return table;
}

// ---------------------------------------------------------------------------
// One run.

// Test names and messages show the row's name, not its bytes.
void PrintTo(const fault& f, std::ostream* out) { *out << f.name; }

class fault_matrix : public testing::TestWithParam<fault> {};

TEST_P(fault_matrix, reports_the_fault_and_runs_every_later_step) {
  const fault& f = GetParam();
  const kelvra_run run = run_kelvra({"--harvest"}, default_phone_with(f.edits).dump());

  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, render(f.expected));
  std::vector<std::string> expected_banners = banner_texts, shown_banners;
  for (banner b : f.absent) std::erase(expected_banners, banner_texts[b]);
  int profile_lines = 0;
  std::istringstream lines(run.out);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("==========")) shown_banners.push_back(line);
    if (line.starts_with("{ ")) ++profile_lines;
  }
  EXPECT_EQ(shown_banners, expected_banners);
  EXPECT_EQ(profile_lines, f.profile_lines);
  EXPECT_EQ(run.audit, clean_audit);
  std::size_t at = 0;
  for (const std::string& text : f.shown) {
    at = run.out.find(text, at);
    ASSERT_NE(at, std::string::npos) << text;
  }
}

INSTANTIATE_TEST_SUITE_P(every_request, fault_matrix, testing::ValuesIn(all_faults()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
