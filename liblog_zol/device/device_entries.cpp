#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/calendar_time.h"
#include "liblog_zol/device/registry_clock.h"

std::string format_profile_record(const std::uint8_t* record) {
  zol::registry_clock clock;
  return format_profile_record(record, clock);
}

bool profile_calendar_time(std::uint64_t timestamp, std::string& text) {
  zol::registry_clock clock;
  zol::timesync_pair pair;
  if (!clock.read(pair)) return false;
  zol::calendar_text calendar;
  if (!zol::make_calendar_text(zol::calendar_microseconds(timestamp, pair), calendar))
    return false;
  text.assign(calendar.view());
  return true;
}
