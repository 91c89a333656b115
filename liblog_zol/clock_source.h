#pragma once

// Where the calendar time of a record comes from: the clock-correlation pair
// of the timesync service, one processor-clock reading and the wall-clock
// reading at the same instant. The collector reads it from the device for
// every record; a desk tool hands in a fixed pair, or none.

#include <cstdint>

namespace zol {

// Both in nanoseconds; `calendar` since 1970-01-01 00:00 UTC.
struct timesync_pair {
  std::int64_t tmx = 0;
  std::int64_t calendar = 0;
  friend bool operator==(const timesync_pair&, const timesync_pair&) = default;
};

// No virtual destructor: sources are owned where they are made, never
// deleted through the base.
class clock_source {
 public:
  // False when no pair is to be had for this record.
  virtual bool read(timesync_pair& pair) = 0;
};

class fixed_clock final : public clock_source {
 public:
  explicit fixed_clock(timesync_pair pair) noexcept : pair_(pair) {}
  bool read(timesync_pair& pair) override {
    pair = pair_;
    return true;
  }

 private:
  timesync_pair pair_;
};

class no_clock final : public clock_source {
 public:
  bool read(timesync_pair&) override { return false; }
};

}  // namespace zol
