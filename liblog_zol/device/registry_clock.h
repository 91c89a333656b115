#pragma once

// The clock pair as the device publishes it: the timesync service's registry
// property, looked up afresh for every record, so a pair renewed while the
// log is printed applies at once.

#include "liblog_zol/clock_source.h"

namespace zol {

class registry_clock final : public clock_source {
 public:
  bool read(timesync_pair& pair) override;
};

}  // namespace zol
