#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/calendar_time.h"
#include "liblog_zol/device/registry_clock.h"
#include "liblog_zol/text_printer.h"

std::string format_profile_record(const std::uint8_t* record) {
  zol::registry_clock clock;
  return format_profile_record(record, clock);
}

const char* profile_line(const std::uint8_t* record) {
  thread_local zol::text_printer printer;
  zol::registry_clock clock;
  decode_profile_record(printer, record, clock);
  return printer.c_str();
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
