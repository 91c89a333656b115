#pragma once

// A capture of kelvra --harvest (standard output alone, or with standard
// error merged) read whole into its model: every intact line read, each
// damage told once and kept in the model, the facts found.

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "inspect/capture/capture_clock.h"
#include "inspect/capture/capture_model.h"
#include "inspect/input/archive_walk.h"
#include "inspect/input/byte_source.h"
#include "inspect/input/input_damage.h"
#include "inspect/input/input_reader.h"

namespace inspect {

struct capture_options {
  year_preference years;                       // of the calendar texts
  std::string zone;                            // IANA name they were printed in; empty: TZ's
  std::optional<zol::timesync_pair> timesync;  // instead of the texts' pair
  std::FILE* messages = stderr;                // where damage is told; null: nowhere
  std::FILE* progress = nullptr;               // where a progress line goes, if anywhere
  archive_limits archive;                      // for a capture inside an archive
};

// False, with `fault`, when nothing can be made of the input (status 2).
// `file` names it in messages.
bool read_capture(std::unique_ptr<byte_source> source, const std::string& file,
                  const capture_options& options, capture_model& model, input_fault& fault);
// An input already opened (its form told).
bool read_capture(opened_input input, const std::string& file, const capture_options& options,
                  capture_model& model, input_fault& fault);

}  // namespace inspect
