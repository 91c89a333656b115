// Every request of `kelvra --harvest`, failed in every way the phone can fail
// it, one fault at a time on the default phone: the run still ends with status
// 0, writes exactly the failure lines of that fault, runs every later step and
// gives back everything it obtained from the platform.

#include <IOKit/IOReturn.h>
#include <gtest/gtest.h>
#include <mach/mach_error.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "run_kelvra.h"
#include "tmxsim/control.h"

namespace {

using json = nlohmann::ordered_json;

constexpr kern_return_t rejected = kIOReturnNotPermitted;
constexpr kern_return_t not_found = kIOReturnNotFound;
constexpr kern_return_t unsupported = kIOReturnUnsupported;
constexpr kern_return_t no_connection = MACH_SEND_INVALID_DEST;

// ---------------------------------------------------------------------------
// Failure lines.

struct failure {
  bool varnel;  // module varnel of quandor/varnel; otherwise kelvra of kelvra/kelvra
  const char* check;
  long line;
  kern_return_t error = 0;
};
using failures = std::vector<failure>;

failures operator+(failures first, const failures& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// The access layer's "kr == 0 " lines are the ones that also carry the error
// text as their message.
std::string render(const failures& lines) {
  std::ostringstream out;
  bool in_hex = false;  // set by the first line with an error value, for good
  for (const failure& f : lines) {
    out << "Assertion failed: " << (f.varnel ? "varnel" : "kelvra") << ": Check failed: "
        << f.check << " bail ";
    if (f.varnel && std::string_view(f.check) == "kr == 0 ")
      out << mach_error_string(f.error) << " ";
    out << (f.varnel ? "quandor/varnel:" : "kelvra/kelvra:");
    if (in_hex)
      out << std::hex << std::showbase << f.line << std::dec << std::noshowbase;
    else
      out << f.line;
    if (f.error != 0) {
      out << " " << mach_error_string(f.error) << " (" << hex(static_cast<unsigned>(f.error))
          << ")";
      in_hex = true;
    }
    out << "\n";
  }
  return out.str();
}

// The line a step writes when its request fails.
struct step {
  bool varnel;
  const char* check;
  long line;

  failure failed(kern_return_t error) const { return {varnel, check, line, error}; }
};

constexpr step stats_step{false, "kr == 0 ", 130};
constexpr step lyn_step{false, "kr == 0 ", 148};
constexpr step btmspk_step{false, "kr == 0 ", 153};
constexpr step button_d0_step{false, "kr == 0 ", 159};
constexpr step button_d1_step{false, "kr == 0 ", 164};
constexpr step assets_step{false, "kr == 0 ", 189};
constexpr step events_step{true, "result == 0 ", 1871};

// The one-shot command call's own line, then the step's.
failures service_missing(step s) { return {{true, "service", 2903}, s.failed(not_found)}; }
failures open_rejected(step s) {
  return {{true, "kr == 0 ", 2906, rejected}, s.failed(rejected)};
}
failures command_failed(step s, kern_return_t error) {
  return {{true, "kr == 0 ", 2910, error}, s.failed(error)};
}
failures null_connection() { return {{true, "connect", 2907}}; }

// ---------------------------------------------------------------------------
// Banners, in the order of the sequence.

enum banner {
  stats, lyn, btmspk, button_d0, button_d1, profile, assets,
  hid_e0, hid_b4, hid_e1, hid_e2, hid_e3, hid_e4
};

const std::vector<std::string> banner_texts = {
    "==========kelvra get-stats==============",
    "==========kelvra lyn 0xd0==============",
    "==========kelvra btmspk 0xd0==============",
    "==========kelvra zol-button 0xd0==============",
    "==========kelvra zol-button 0xd1==============",
    "==========kelvra zol-button profile==============",
    "==========kelvra zol-button get-assets==============",
    "==============feedscope get 0xe0 -u 0xFF00,0x0020===============",
    "==============feedscope get 0xb4 -u 0xFF00,0x0020===============",
    "==============feedscope get 0xe1 -u 0xFF00,0x0020===============",
    "==============feedscope get 0xe2 -u 0xFF00,0x0020===============",
    "==============feedscope get 0xe3 -u 0xFF00,0x0020===============",
    "==============feedscope get 0xe4 -u 0xFF00,0x0020===============",
};

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

json* find_in(json& entries, std::string_view name) {
  for (json& entry : entries) {
    if (entry.value("name", "") == name) return &entry;
    if (entry.contains("children"))
      if (json* found = find_in(entry["children"], name)) return found;
  }
  return nullptr;
}

json& service(json& phone, std::string_view name) {
  json* found = find_in(phone["services"], name);
  if (found == nullptr) throw std::logic_error("no service " + std::string(name));
  return *found;
}

json& profiler(json& phone) { return service(phone, "ZOL_profile")["children"][0]; }
json& hid_device(json& phone) { return phone["hid_devices"][0]; }

void remove_service(json& phone, std::string_view name) {
  json& services = phone["services"];
  for (auto entry = services.begin(); entry != services.end(); ++entry)
    if (entry->value("name", "") == name) {
      services.erase(entry);
      return;
    }
  throw std::logic_error("no service " + std::string(name));
}

std::string result_text(kern_return_t error) { return hex(static_cast<unsigned>(error)); }
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

using mutation = std::function<void(json&)>;

struct fault {
  std::string name;
  mutation mutate;
  failures expected;
  std::vector<banner> absent;
  int profile_lines = all_profile_lines;
};

// The one-shot requests of the sequence and what their failure skips.
struct request {
  const char* name;
  const char* service;
  const char* command;
  step on_failure;
  std::vector<banner> skipped;
};

const request one_shot_requests[] = {
    {"stats", "ZOL_zol-button", "215", stats_step, {stats}},
    {"lyn_state", "ZOL_lyn", "208", lyn_step, {btmspk, button_d0, button_d1}},
    {"btmspk_state", "ZOL_btmspk", "208", btmspk_step, {button_d0, button_d1}},
    {"button_state_d0", "ZOL_zol-button", "208", button_d0_step, {button_d1}},
    {"button_state_d1", "ZOL_zol-button", "209", button_d1_step, {}},
    {"assets", "ZOL_zol-button", "216", assets_step, {assets}},
};

struct hid_report {
  const char* key;
  banner shown;
  long line;
};

const hid_report hid_reports[] = {
    {"224", hid_e0, 232}, {"180", hid_b4, 238}, {"225", hid_e1, 244},
    {"226", hid_e2, 250}, {"227", hid_e3, 256}, {"228", hid_e4, 262},
};

mutation answer(const char* service_name, const char* command, json reply) {
  return [=](json& phone) { service(phone, service_name)["commands"][command] = reply; };
}

void add_request_faults(std::vector<fault>& table) {
  for (const request& r : one_shot_requests) {
    const std::string name = r.name;
    table.push_back({name + "_rejected", answer(r.service, r.command, result(rejected)),
                     command_failed(r.on_failure, rejected), r.skipped});
    table.push_back({name + "_not_answered",
                     [r](json& phone) { service(phone, r.service)["commands"].erase(r.command); },
                     command_failed(r.on_failure, unsupported), r.skipped});
    table.push_back({name + "_empty_reply", answer(r.service, r.command, empty_reply), {}, {}});
    table.push_back({name + "_short_reply", answer(r.service, r.command, short_reply), {}, {}});
    table.push_back(
        {name + "_over_long_reply", answer(r.service, r.command, over_long_reply), {}, {}});
  }
}

void add_hid_report_faults(std::vector<fault>& table) {
  for (const hid_report& report : hid_reports) {
    std::vector<banner> later;
    for (banner b : all_hid_banners)
      if (b > report.shown) later.push_back(b);
    const std::string key = report.key;
    table.push_back({"hid_report_" + key + "_rejected",
                     [key](json& phone) { hid_device(phone)["reports"][key] = result(rejected); },
                     {{false, "result == 0 ", report.line, rejected}}, later});
    table.push_back({"hid_report_" + key + "_over_long",
                     [key](json& phone) { hid_device(phone)["reports"][key] = reply_of_size(300); },
                     {}, {}});
  }
}

std::vector<fault> all_faults() {
  std::vector<fault> table = {
      // The button service, asked by steps 1, 2 and 4.
      {"button_service_missing",
       [](json& phone) { remove_service(phone, "ZOL_zol-button"); },
       service_missing(stats_step) + service_missing(button_d0_step) +
           service_missing(assets_step),
       {stats, button_d1, assets}},
      {"button_open_rejected",
       [](json& phone) { service(phone, "ZOL_zol-button")["open_result"] = result_text(rejected); },
       open_rejected(stats_step) + open_rejected(button_d0_step) + open_rejected(assets_step),
       {stats, button_d1, assets}},
      // A zero connection counts as success: the steps print what their
      // buffers hold.
      {"button_null_connection",
       [](json& phone) { service(phone, "ZOL_zol-button")["null_connection"] = true; },
       null_connection() + null_connection() + null_connection() + null_connection(),
       {}},
      {"lyn_service_missing", [](json& phone) { remove_service(phone, "ZOL_lyn"); },
       service_missing(lyn_step), {btmspk, button_d0, button_d1}},
      {"lyn_open_rejected",
       [](json& phone) { service(phone, "ZOL_lyn")["open_result"] = result_text(rejected); },
       open_rejected(lyn_step), {btmspk, button_d0, button_d1}},
      {"lyn_null_connection",
       [](json& phone) { service(phone, "ZOL_lyn")["null_connection"] = true; },
       null_connection(), {}},
      {"btmspk_service_missing", [](json& phone) { remove_service(phone, "ZOL_btmspk"); },
       service_missing(btmspk_step), {button_d0, button_d1}},
      {"btmspk_open_rejected",
       [](json& phone) { service(phone, "ZOL_btmspk")["open_result"] = result_text(rejected); },
       open_rejected(btmspk_step), {button_d0, button_d1}},
      {"btmspk_null_connection",
       [](json& phone) { service(phone, "ZOL_btmspk")["null_connection"] = true; },
       null_connection(), {}},

      // The event reader: command 209 of "profile", up to 10 passes. Another
      // class hides it from the command call but not from the profiler's
      // lookup by name.
      {"events_service_missing",
       [](json& phone) { service(phone, "ZOL_profile")["class"] = "CorvelTMXProfiler"; },
       service_missing(events_step), {}, profiler_lines},
      {"events_open_rejected",
       [](json& phone) { service(phone, "ZOL_profile")["open_result"] = result_text(rejected); },
       open_rejected(events_step), {}, profiler_lines},
      // Each pass asks again and takes the untouched length as delivered.
      {"events_null_connection",
       [](json& phone) { service(phone, "ZOL_profile")["null_connection"] = true; },
       null_connection() + null_connection() + null_connection() + null_connection() +
           null_connection() + null_connection() + null_connection() + null_connection() +
           null_connection() + null_connection(),
       {}, full_event_passes + profiler_lines},
      {"events_rejected",
       [](json& phone) { service(phone, "ZOL_profile")["commands"]["209"] = result(rejected); },
       command_failed(events_step, rejected), {}, profiler_lines},
      {"events_fail_in_third_pass",
       [](json& phone) {
         service(phone, "ZOL_profile")["commands"]["209"][2] = result(rejected);
       },
       command_failed(events_step, rejected), {}, 81 + 152 + profiler_lines},
      // Too short for a record, but not an end: all 10 passes are made.
      {"events_short_reply",
       [](json& phone) { service(phone, "ZOL_profile")["commands"]["209"] = reply_of_size(20); },
       {}, {}, profiler_lines},
      {"events_over_long_reply",
       [](json& phone) { service(phone, "ZOL_profile")["commands"]["209"] = over_long_reply; },
       {}, {}, full_event_passes + profiler_lines},

      // The profiler connection: "ZOL_profile" opened through its child,
      // method 9, up to 10 passes. A missing service is passed over quietly.
      {"profiler_service_missing",
       [](json& phone) { service(phone, "ZOL_profile")["name"] = "profile"; },
       {}, {}, event_lines},
      {"profiler_without_child",
       [](json& phone) { service(phone, "ZOL_profile").erase("children"); },
       {{true, "child", 1946}}, {}, event_lines},
      {"profiler_open_rejected",
       [](json& phone) { profiler(phone)["open_result"] = result_text(rejected); },
       {{true, "kr == 0 ", 1949, rejected}}, {}, event_lines},
      {"profiler_null_connection",
       [](json& phone) { profiler(phone)["null_connection"] = true; },
       {{true, "kr == 0 ", 2239, no_connection}}, {}, event_lines},
      {"profiler_rejected",
       [](json& phone) { profiler(phone)["methods"]["9"] = result(rejected); },
       {{true, "kr == 0 ", 2239, rejected}}, {}, event_lines},
      {"profiler_fails_in_second_pass",
       [](json& phone) { profiler(phone)["methods"]["9"][1] = result(rejected); },
       {{true, "kr == 0 ", 2239, rejected}}, {}, event_lines + 70},
      {"profiler_short_reply",
       [](json& phone) { profiler(phone)["methods"]["9"] = reply_of_size(20); },
       {}, {}, event_lines},
      {"profiler_over_long_reply",
       [](json& phone) { profiler(phone)["methods"]["9"] = over_long_reply; },
       {}, {}, event_lines + full_profiler_passes},

      // The HID device.
      {"hid_device_missing", [](json& phone) { phone.erase("hid_devices"); },
       {{false, "service", 221}}, all_hid_banners},
      {"hid_device_not_creatable", [](json& phone) { hid_device(phone)["create"] = false; },
       {{false, "device", 224}}, all_hid_banners},
      {"hid_open_rejected",
       [](json& phone) { hid_device(phone)["open_result"] = result_text(rejected); },
       {{false, "result == 0 ", 227, rejected}}, all_hid_banners},
      {"hid_report_empty",
       [](json& phone) { hid_device(phone)["reports"]["180"] = empty_reply; }, {}, {}},

      // After the first line with an error value, line numbers are hex.
      {"later_line_numbers_in_hex",
       [](json& phone) {
         service(phone, "ZOL_zol-button")["commands"]["215"] = result(rejected);
         phone.erase("hid_devices");
       },
       command_failed(stats_step, rejected) + failures{{false, "service", 221}},
       {stats, hid_e0, hid_b4, hid_e1, hid_e2, hid_e3, hid_e4}},
  };
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

std::vector<std::string> banners_in(const std::string& out) {
  std::vector<std::string> found;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with("==========")) found.push_back(line);
  return found;
}

int profile_lines_in(const std::string& out) {
  int count = 0;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with("{ ")) ++count;
  return count;
}

class fault_matrix : public testing::TestWithParam<fault> {};

TEST_P(fault_matrix, reports_the_fault_and_runs_every_later_step) {
  const fault& f = GetParam();
  json phone = json::parse(tmxsim::default_description());
  f.mutate(phone);
  const description_file file(phone);

  const kelvra_run run = run_kelvra({"--harvest"}, file.path());

  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, render(f.expected));
  std::vector<std::string> expected_banners;
  for (std::size_t b = 0; b < banner_texts.size(); ++b)
    if (std::find(f.absent.begin(), f.absent.end(), static_cast<banner>(b)) == f.absent.end())
      expected_banners.push_back(banner_texts[b]);
  EXPECT_EQ(banners_in(run.out), expected_banners);
  EXPECT_EQ(profile_lines_in(run.out), f.profile_lines);
  EXPECT_EQ(run.audit, clean_audit);
}

INSTANTIATE_TEST_SUITE_P(every_request, fault_matrix, testing::ValuesIn(all_faults()),
                         [](const testing::TestParamInfo<fault>& row) {
                           return row.param.name;
                         });

// The unchanged phone, as the baseline of the table.
TEST(fault_matrix_baseline, default_phone_runs_clean) {
  const kelvra_run run = run_kelvra({"--harvest"}, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(banners_in(run.out), banner_texts);
  EXPECT_EQ(profile_lines_in(run.out), all_profile_lines);
  EXPECT_EQ(run.audit, clean_audit);
}

}  // namespace
