#pragma once

// The full drain's capture, as the benchmarks of the views read it: its
// text once, and a model read from it as every subcommand does first.

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "inspect/capture/capture_reader.h"

namespace bench {

inline const std::string& full_drain() {
  static const std::string text = [] {
    std::ifstream file(KELVRA_FULL_DRAIN_CAPTURE, std::ios::binary);
    std::ostringstream all;
    all << file.rdbuf();
    return all.str();
  }();
  return text;
}

inline inspect::capture_model read_full_drain() {
  inspect::capture_model model;
  inspect::input_fault fault;
  inspect::capture_options options;
  options.years = {2026, 2026};
  if (!inspect::read_capture(inspect::memory_source(full_drain()), "full-drain", options, model,
                             fault))
    std::fprintf(stderr, "%s\n", inspect::fault_line(fault).c_str());
  return model;
}

}  // namespace bench
