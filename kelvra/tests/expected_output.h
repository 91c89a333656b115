#pragma once

// What `kelvra --harvest` writes, its banners and its failure lines, and how
// the tests run it.

#include <IOKit/IOReturn.h>
#include <mach/message.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

struct kelvra_run {
  std::string out;
  std::string err;
  int status = -1;
  std::string audit;  // the last line of the platform's call log
  std::string phone;  // the file TMXSIM_DEVICE named, "" for none
};

// Runs the built tool, named "kelvra" in argv[0], against a phone: "" for the
// built-in default phone, the path of a description, or, when it starts with
// '{', the description itself, put in a file of its own.
kelvra_run run_kelvra(const std::vector<std::string>& args, const std::string& phone);

// The whole of a file; "" when it cannot be read.
std::string read_file(const std::string& path);

inline const std::string clean_audit = "audit io_objects=0 connections=0 cf_objects=0 misuse=0";

struct failure {
  bool varnel;  // module varnel of quandor/varnel; otherwise kelvra of kelvra/kelvra
  const char* check;
  long line;
  kern_return_t error = 0;
};
using failures = std::vector<failure>;

inline failures operator+(failures first, const failures& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// The phone's texts of the results the tests meet; a result without a text
// is written as the platform's formatted output writes a missing one.
inline const char* text_of(kern_return_t error) {
  switch (static_cast<std::uint32_t>(error)) {
    case 0xe00002c7: return "(iokit/common) unsupported function";
    case 0xe00002e2: return "(iokit/common) not permitted";
    case 0xe00002f0: return "(iokit/common) data was not found";
    case 0x10000003: return "(ipc/send) invalid destination port";
    case 0xffffffff: return "(null)";
    default: return "(a result this table lacks)";
  }
}

// The lines as standard error shows them. The access layer's "kr == 0 " lines
// also carry the error text as their message, and once a line has carried an
// error value every later line number is hex.
inline std::string render(const failures& lines) {
  std::ostringstream out;
  bool in_hex = false;
  for (const failure& f : lines) {
    out << "Assertion failed: " << (f.varnel ? "varnel" : "kelvra") << ": Check failed: "
        << f.check << " bail ";
    if (f.varnel && std::string_view(f.check) == "kr == 0 ")
      out << text_of(f.error) << " ";
    out << (f.varnel ? "quandor/varnel:" : "kelvra/kelvra:");
    if (in_hex) out << std::hex << std::showbase;
    out << f.line << std::dec << std::noshowbase;
    if (f.error != 0) {
      out << " " << text_of(f.error) << " (0x" << std::hex
          << static_cast<unsigned>(f.error) << std::dec << ")";
      in_hex = true;
    }
    out << "\n";
  }
  return out.str();
}

// The lines the steps write when their request fails, without the error.
inline constexpr failure stats_step{false, "kr == 0 ", 130};
inline constexpr failure lyn_step{false, "kr == 0 ", 148};
inline constexpr failure btmspk_step{false, "kr == 0 ", 153};
inline constexpr failure button_d0_step{false, "kr == 0 ", 159};
inline constexpr failure button_d1_step{false, "kr == 0 ", 164};
inline constexpr failure assets_step{false, "kr == 0 ", 189};
inline constexpr failure events_step{true, "result == 0 ", 1871};
inline constexpr failure hid_missing{false, "service", 221};

// The one-shot command call's own line, then the step's.
inline failures service_missing(failure step) {
  return {{true, "service", 2903}, {step.varnel, step.check, step.line, kIOReturnNotFound}};
}
inline failures open_rejected(failure step, kern_return_t error) {
  return {{true, "kr == 0 ", 2906, error}, {step.varnel, step.check, step.line, error}};
}
inline failures command_failed(failure step, kern_return_t error) {
  return {{true, "kr == 0 ", 2910, error}, {step.varnel, step.check, step.line, error}};
}
inline failures services_missing(const failures& steps) {
  failures lines;
  for (const failure& step : steps) lines = lines + service_missing(step);
  return lines;
}
// A machine without coprocessor: every step fails.
inline const failures no_coprocessor =
    services_missing({stats_step, lyn_step, events_step, assets_step}) + failures{hid_missing};

enum banner {
  stats, lyn, btmspk, button_d0, button_d1, profile, assets,
  hid_e0, hid_b4, hid_e1, hid_e2, hid_e3, hid_e4
};

inline std::string hid_banner(const char* report) {
  return "==============feedscope get " + std::string(report) + " -u 0xFF00,0x0020===============";
}

inline const std::vector<std::string> banner_texts = {
    "==========kelvra get-stats==============",
    "==========kelvra lyn 0xd0==============",
    "==========kelvra btmspk 0xd0==============",
    "==========kelvra zol-button 0xd0==============",
    "==========kelvra zol-button 0xd1==============",
    "==========kelvra zol-button profile==============",
    "==========kelvra zol-button get-assets==============",
    hid_banner("0xe0"), hid_banner("0xb4"), hid_banner("0xe1"),
    hid_banner("0xe2"), hid_banner("0xe3"), hid_banner("0xe4"),
};

// The banners as the output shows them, each with its newline.
inline std::string banners(std::initializer_list<banner> shown) {
  std::string text;
  for (banner b : shown) text += banner_texts[b] + "\n";
  return text;
}
