#pragma once

#include <string>
#include <vector>

struct kelvra_run {
  std::string out;
  std::string err;
  int status = -1;
  std::string audit;  // the last line of the platform's call log
};

// Runs the built tool, named "kelvra" in argv[0], against the phone described
// by devices/<device>, or by the file `device` when it is an absolute path
// ("" for the built-in default phone).
kelvra_run run_kelvra(const std::vector<std::string>& args,
                      const std::string& device);

inline const std::string clean_audit =
    "audit io_objects=0 connections=0 cf_objects=0 misuse=0";

// Failure lines; `line` as it prints: decimal until the first line carrying
// an error value, "0x..." from then on.
std::string kelvra_failure(const std::string& check, const std::string& line,
                           int error = 0);
std::string varnel_failure(const std::string& check, const std::string& line,
                           int error = 0, bool with_message = false);

// The lines of a step whose service is missing, once standard error is hex.
std::string states_missing();
std::string events_missing();
std::string assets_missing();
std::string hid_missing();
// Step 1 with its service missing, as the first failure of a run.
std::string stats_missing_first();

std::string hex(unsigned value);
int count_lines(const std::string& text);
