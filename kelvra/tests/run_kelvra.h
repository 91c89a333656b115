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
kelvra_run run_kelvra(const std::vector<std::string>& args, const std::string& device);

inline const std::string clean_audit = "audit io_objects=0 connections=0 cf_objects=0 misuse=0";
