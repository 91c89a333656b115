#pragma once

// The clock pair of a capture, taken back from its own calendar-time texts.
// A text names the local month, day and time to the microsecond but not the
// year; the pair is the first record's processor time against the instant
// its text names, in the given year (or the latest year, back from the
// current one, in which the text exists). A record whose text the pair does
// not reproduce, because the device renewed its pair, starts a new one.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "liblog_zol/clock_source.h"

namespace inspect {

class capture_clock final : public zol::clock_source {
 public:
  explicit capture_clock(std::optional<int> year) : year_(year) {}

  // The record about to be decoded: its timestamp and its line's text, if
  // any. False, with `fault`, when no instant in this time zone has the text.
  bool next_record(std::uint64_t timestamp, std::optional<std::string_view> text,
                   std::string& fault);

  bool read(zol::timesync_pair& pair) override;

  // The pair last recovered.
  const std::optional<zol::timesync_pair>& pair() const noexcept { return pair_; }

 private:
  std::optional<int> year_;
  std::optional<zol::timesync_pair> pair_;
  bool has_text_ = false;
};

// "TMX,CALENDAR": the timesync property's two numbers.
std::optional<zol::timesync_pair> parse_timesync(std::string_view text);

}  // namespace inspect
