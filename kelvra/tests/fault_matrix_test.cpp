// Every request of `kelvra --harvest`, failed in every way the phone can fail
// it, one fault at a time on the default phone: the run still ends with status
// 0, writes exactly the failure lines of that fault, runs every later step and
// gives back everything it obtained from the platform.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "expected_output.h"
#include "run_kelvra.h"
#include "tmxsim/control.h"

namespace {

using json = nlohmann::ordered_json;

constexpr kern_return_t rejected = kIOReturnNotPermitted;
constexpr kern_return_t unsupported = kIOReturnUnsupported;
constexpr kern_return_t no_connection = MACH_SEND_INVALID_DEST;
constexpr kern_return_t without_text = -1;

const failure null_connection{true, "connect", 2907};

const std::vector<banner> all_hid_banners = {hid_e0, hid_b4, hid_e1, hid_e2, hid_e3, hid_e4};

// Decoded profile lines of the default phone: 81 + 152 + 70 records from
// "profile", 70 + 93 from the profiler connection.
constexpr int event_lines = 303;
constexpr int profiler_lines = 163;
constexpr int all_profile_lines = event_lines + profiler_lines;
constexpr int full_event_passes = 10 * (65536 / 48);
constexpr int full_profiler_passes = 10 * (48000 / 48);

// ---------------------------------------------------------------------------
// Changes to the default phone.

using mutation = std::function<void(json&)>;

json* find_in(json& entries, std::string_view name) {
  for (json& entry : entries) {
    if (entry.value("name", "") == name) return &entry;
    if (entry.contains("children"))
      if (json* found = find_in(entry["children"], name)) return found;
  }
  return nullptr;
}

// Sets the item at `path` of the service named `name` ("" for the phone
// itself) to `value`, or removes it when there is no value.
mutation set(std::string name, std::string path, std::optional<json> value = std::nullopt) {
  return [=](json& phone) {
    json* base = name.empty() ? &phone : find_in(phone["services"], name);
    if (base == nullptr) throw std::logic_error("no service " + name);
    const json::json_pointer at(path);
    if (value)
      (*base)[at] = *value;
    else
      (*base)[at.parent_pointer()].erase(at.back());
  };
}

std::string result_text(kern_return_t error) {
  std::ostringstream text;
  text << "0x" << std::hex << static_cast<unsigned>(error);
  return text.str();
}
json result(kern_return_t error) { return {{"result", result_text(error)}}; }
json reply_of_size(std::size_t size) {
  const json zeros = {{"zeros", size}};
  return {{"fields", json::array({zeros})}};
}
const json short_reply = {{"reply", "5a a5 5a"}};
const json empty_reply = {{"reply", ""}};
// More than any request offers: 65,536 bytes is the largest capacity.
const json over_long_reply = reply_of_size(70000);

// ---------------------------------------------------------------------------
// The table.

struct fault {
  std::string name;
  mutation mutate;
  failures expected;
  std::vector<banner> absent;
  int profile_lines = all_profile_lines;
  std::string shown = "";  // text the output must hold
};

// The services asked through the one-shot command call, the steps that ask
// them and what their failure skips. Another class hides a service from the
// command call; "ZOL_profile" stays visible to the profiler's lookup by name.
struct service_user {
  const char* name;
  const char* service;
  std::vector<step> steps;
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
     banner_texts[assets] + "\nLength: 4096, expected 1200\n"},
    {"lyn", "ZOL_lyn", {lyn_step}, {btmspk, button_d0, button_d1}, 1},
    {"btmspk", "ZOL_btmspk", {btmspk_step}, {button_d0, button_d1}, 1},
    // The event reader asks 10 times and takes the untouched length as delivered.
    {"events", "ZOL_profile", {events_step}, {}, 10, profiler_lines,
     full_event_passes + profiler_lines},
};

void add_service_faults(std::vector<fault>& table) {
  for (const service_user& u : service_users) {
    const std::string name = u.name;
    failures missing, refused;
    for (step s : u.steps) {
      missing = missing + service_missing(s);
      refused = refused + open_rejected(s, rejected);
    }
    table.push_back({name + "_service_missing", set(u.service, "/class", "Other"), missing,
                     u.skipped, u.profile_lines_if_failed});
    table.push_back({name + "_open_rejected", set(u.service, "/open_result", result_text(rejected)),
                     refused, u.skipped, u.profile_lines_if_failed});
    table.push_back({name + "_null_connection", set(u.service, "/null_connection", true),
                     failures(u.requests, null_connection), {}, u.profile_lines_if_null,
                     u.shown_if_null});
  }
}

// The one-shot requests of the sequence and what their failure skips.
struct request {
  const char* name;
  const char* service;
  const char* command;
  step on_failure;
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

void add_request_faults(std::vector<fault>& table) {
  for (const request& r : one_shot_requests) {
    const std::string name = r.name;
    table.push_back({name + "_rejected", set(r.service, r.command, result(rejected)),
                     command_failed(r.on_failure, rejected), r.skipped});
    table.push_back({name + "_not_answered", set(r.service, r.command),
                     command_failed(r.on_failure, unsupported), r.skipped});
    table.push_back({name + "_empty_reply", set(r.service, r.command, empty_reply), {}, {}});
    table.push_back({name + "_short_reply", set(r.service, r.command, short_reply), {}, {}});
    table.push_back(
        {name + "_over_long_reply", set(r.service, r.command, over_long_reply), {}, {}});
  }
}

// The feature reports in the order they are read, and the line of each one's failure.
const std::pair<const char*, long> hid_reports[] = {
    {"224", 232}, {"180", 238}, {"225", 244}, {"226", 250}, {"227", 256}, {"228", 262}};

void add_hid_report_faults(std::vector<fault>& table) {
  for (std::size_t i = 0; i < std::size(hid_reports); ++i) {
    const auto [key, line] = hid_reports[i];
    const std::string path = std::string("/hid_devices/0/reports/") + key;
    const std::vector<banner> later(all_hid_banners.begin() + static_cast<long>(i) + 1,
                                    all_hid_banners.end());
    table.push_back({std::string("hid_report_") + key + "_rejected", set("", path, result(rejected)),
                     {{false, "result == 0 ", line, rejected}}, later});
    table.push_back(
        {std::string("hid_report_") + key + "_over_long", set("", path, reply_of_size(300)), {}, {}});
  }
}

std::vector<fault> all_faults() {
  std::vector<fault> table = {
      {"none", [](json&) {}, {}, {}},

      // The event reader: command 209 of "profile", up to 10 passes.
      {"events_rejected", set("ZOL_profile", "/commands/209", result(rejected)),
       command_failed(events_step, rejected), {}, profiler_lines},
      {"events_fail_in_third_pass", set("ZOL_profile", "/commands/209/2", result(rejected)),
       command_failed(events_step, rejected), {}, 81 + 152 + profiler_lines},
      // Too short for a record, but not an end: all 10 passes are made.
      {"events_short_reply", set("ZOL_profile", "/commands/209", reply_of_size(20)),
       {}, {}, profiler_lines},
      {"events_over_long_reply", set("ZOL_profile", "/commands/209", over_long_reply),
       {}, {}, full_event_passes + profiler_lines},

      // The profiler connection: "ZOL_profile" opened through its child,
      // method 9, up to 10 passes. A missing service is passed over quietly.
      {"profiler_service_missing", set("ZOL_profile", "/name", "profile"), {}, {}, event_lines},
      {"profiler_without_child", set("ZOL_profile", "/children"),
       {{true, "child", 1946}}, {}, event_lines},
      {"profiler_open_rejected",
       set("ZOL_profile", "/children/0/open_result", result_text(rejected)),
       {{true, "kr == 0 ", 1949, rejected}}, {}, event_lines},
      {"profiler_null_connection", set("ZOL_profile", "/children/0/null_connection", true),
       {{true, "kr == 0 ", 2239, no_connection}}, {}, event_lines},
      {"profiler_rejected", set("ZOL_profile", "/children/0/methods/9", result(rejected)),
       {{true, "kr == 0 ", 2239, rejected}}, {}, event_lines},
      {"profiler_fails_in_second_pass",
       set("ZOL_profile", "/children/0/methods/9/1", result(rejected)),
       {{true, "kr == 0 ", 2239, rejected}}, {}, event_lines + 70},
      {"profiler_short_reply", set("ZOL_profile", "/children/0/methods/9", reply_of_size(20)),
       {}, {}, event_lines},
      {"profiler_over_long_reply", set("ZOL_profile", "/children/0/methods/9", over_long_reply),
       {}, {}, event_lines + full_profiler_passes},

      // The HID device.
      {"hid_device_missing", set("", "/hid_devices"), {hid_missing}, all_hid_banners},
      {"hid_device_of_another_usage", set("", "/hid_devices/0/usage", 0x21), {hid_missing},
       all_hid_banners},
      {"hid_device_not_creatable", set("", "/hid_devices/0/create", false),
       {{false, "device", 224}}, all_hid_banners},
      {"hid_open_rejected", set("", "/hid_devices/0/open_result", result_text(rejected)),
       {{false, "result == 0 ", 227, rejected}}, all_hid_banners},
      {"hid_report_empty", set("", "/hid_devices/0/reports/180", empty_reply), {}, {}},

      // After the first line with an error value, line numbers are hex; a
      // result the platform has no text for stops no later line.
      {"result_without_text_then_hex_line_numbers",
       [](json& phone) {
         set("ZOL_zol-button", "/commands/215", result(without_text))(phone);
         set("", "/hid_devices")(phone);
       },
       command_failed(stats_step, without_text) + failures{hid_missing},
       {stats, hid_e0, hid_b4, hid_e1, hid_e2, hid_e3, hid_e4}},
  };
  add_service_faults(table);
  add_request_faults(table);
  add_hid_report_faults(table);
  return table;
}

// ---------------------------------------------------------------------------
// One run.

// Test names and messages show the row's name, not its bytes.
void PrintTo(const fault& f, std::ostream* out) { *out << f.name; }

// The modified phone in a file of its own for the life of the object.
class description_file {
 public:
  explicit description_file(const json& phone) {
    char name[] = "/tmp/kelvra_fault_XXXXXX";
    const int fd = mkstemp(name);
    if (fd >= 0) close(fd);
    path_ = name;
    std::ofstream(path_) << phone.dump();
  }
  ~description_file() { std::remove(path_.c_str()); }
  description_file(const description_file&) = delete;
  description_file& operator=(const description_file&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

class fault_matrix : public testing::TestWithParam<fault> {};

TEST_P(fault_matrix, reports_the_fault_and_runs_every_later_step) {
  const fault& f = GetParam();
  json phone = json::parse(tmxsim::default_description());
  f.mutate(phone);
  const description_file file(phone);

  const kelvra_run run = run_kelvra({"--harvest"}, file.path());

  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, render(f.expected));
  std::vector<std::string> expected_banners, shown_banners;
  for (std::size_t b = 0; b < banner_texts.size(); ++b)
    if (std::find(f.absent.begin(), f.absent.end(), static_cast<banner>(b)) == f.absent.end())
      expected_banners.push_back(banner_texts[b]);
  int profile_lines = 0;
  std::istringstream lines(run.out);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("==========")) shown_banners.push_back(line);
    if (line.starts_with("{ ")) ++profile_lines;
  }
  EXPECT_EQ(shown_banners, expected_banners);
  EXPECT_EQ(profile_lines, f.profile_lines);
  EXPECT_NE(run.out.find(f.shown), std::string::npos) << f.shown;
  EXPECT_EQ(run.audit, clean_audit);
}

INSTANTIATE_TEST_SUITE_P(every_request, fault_matrix, testing::ValuesIn(all_faults()),
                         [](const testing::TestParamInfo<fault>& row) {
                           return row.param.name;
                         });

}  // namespace
