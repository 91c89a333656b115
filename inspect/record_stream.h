#pragma once

// What every subcommand does first: open the input, take its records back
// one at a time with the clock that goes with each, and report a fault as
// one line with exit status 2.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "inspect/capture_clock.h"
#include "inspect/input/record_input.h"
#include "liblog_zol/clock_source.h"

namespace inspect {

struct stream_options {
  std::string input = "-";
  std::optional<input_form> form;
  std::optional<zol::timesync_pair> timesync;  // overrides what a capture says
  std::optional<int> year;
  bool progress = true;  // when standard error is a terminal
};

struct stream_record {
  const input_record& input;
  std::uint64_t ordinal;        // from 0
  zol::clock_source& clock;     // for this record
};

// Calls `each` for every record; the exit status: 0, or 2 after the fault
// line. `each` returns false to stop with a fault of its own, already told.
int for_each_record(const stream_options& options,
                    const std::function<bool(const stream_record&)>& each);

// The same over bytes already opened; `messages` takes the warnings.
int for_each_record(std::unique_ptr<byte_source> source, const stream_options& options,
                    std::FILE* messages, const std::function<bool(const stream_record&)>& each);

}  // namespace inspect
