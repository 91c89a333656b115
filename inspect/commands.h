#pragma once

// The subcommands of kelvra-inspect; each returns the exit status.

#include "inspect/record_stream.h"

namespace inspect {

// The collector's lines for the records, or with `hex` its "prof-event " lines.
int run_decode(const stream_options& options, bool hex);

// One JSON object per record (JSON Lines).
int run_records(const stream_options& options);

}  // namespace inspect
