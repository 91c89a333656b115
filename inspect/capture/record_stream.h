#pragma once

// The records of an input one at a time, with the clock that goes with
// each: what decode and records read, at any input size in flat memory.

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "inspect/capture/capture_clock.h"
#include "inspect/input/archive_walk.h"
#include "inspect/input/byte_source.h"
#include "inspect/input/input_forms.h"
#include "inspect/input/input_reader.h"
#include "inspect/input/record_lines.h"
#include "liblog_zol/clock_source.h"

namespace inspect {

struct stream_options {
  std::string input = "-";
  std::optional<input_form> form;
  std::optional<zol::timesync_pair> timesync;  // overrides what a capture says
  year_preference years;
  std::string zone;  // IANA name the calendar texts were printed in; empty: TZ's
  bool progress = true;  // when the messages go to a terminal
  std::optional<std::string> member;  // inside an archive: the capture to take
  archive_limits archive;
};

struct stream_record {
  const input_record& input;
  std::uint64_t ordinal;     // from 0
  zol::clock_source& clock;  // for this record
  const zol::local_zone& zone;  // of its calendar time
};

// Calls `each` for every intact record of the bytes opened; `messages`
// takes the faults, damage and progress. The exit status: 0 when the input
// was read whole, 1 when damage was told, 2 after the fault line when
// nothing could be made of it.
int for_each_record(std::unique_ptr<byte_source> source, const stream_options& options,
                    std::FILE* messages, const std::function<void(const stream_record&)>& each);
// The same over an input whose form is told.
int for_each_record(opened_input input, const stream_options& options, std::FILE* messages,
                    const std::function<void(const stream_record&)>& each);

// The input opened and its form told as the stream reads it; none after
// the fault line on `messages`.
std::optional<opened_input> open_stream(std::unique_ptr<byte_source> source,
                                        const stream_options& options, std::FILE* messages);

}  // namespace inspect
