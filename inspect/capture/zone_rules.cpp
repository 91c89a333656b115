#include "inspect/capture/zone_rules.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

namespace inspect {
namespace {

constexpr std::int64_t day_seconds = 86'400;

// localtime_r's zone, for a TZ the tz database has no name for.
class c_library_rules final : public zone_rules {
 public:
  std::int32_t utc_offset(std::int64_t seconds) const override {
    std::tm local{};
    if (!zol::c_library_zone().local_time(seconds, local)) return 0;
    return static_cast<std::int32_t>(local.tm_gmtoff);
  }
  bool local_time(std::int64_t seconds, std::tm& local) const override {
    return zol::c_library_zone().local_time(seconds, local);
  }
};

// The zone name /etc/localtime links to, as the C library reads it without TZ.
std::string machine_zone_name() {
  std::error_code error;
  const std::string target = std::filesystem::read_symlink("/etc/localtime", error).string();
  constexpr std::string_view directory = "zoneinfo/";
  const std::size_t at = target.rfind(directory);
  return error || at == std::string::npos ? std::string() : target.substr(at + directory.size());
}

const zone_rules& resolve_process_zone() {
  static const c_library_rules c_library;
  const char* const tz = std::getenv("TZ");
  std::string_view name = tz == nullptr ? std::string_view() : tz;
  std::string machine;
  if (tz == nullptr) {
    machine = machine_zone_name();
    name = machine;
  } else if (name.starts_with(':')) {
    name.remove_prefix(1);
  }
  const zone_rules* named = name.empty() ? nullptr : find_zone(name);
  return named != nullptr ? *named : c_library;
}

}  // namespace

bool zone_rules::local_time(std::int64_t seconds, std::tm& local) const {
  using namespace std::chrono;
  const std::int32_t offset = utc_offset(seconds);
  const std::int64_t shifted = seconds + offset;
  std::int64_t days = shifted / day_seconds;
  std::int64_t rest = shifted % day_seconds;
  if (rest < 0) {
    rest += day_seconds;
    --days;
  }
  const sys_days day{std::chrono::days{days}};
  const year_month_day date{day};
  local = {};
  local.tm_year = static_cast<int>(date.year()) - 1900;
  local.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
  local.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
  local.tm_hour = static_cast<int>(rest / 3600);
  local.tm_min = static_cast<int>(rest / 60 % 60);
  local.tm_sec = static_cast<int>(rest % 60);
  local.tm_wday = static_cast<int>(weekday{day}.c_encoding());
  local.tm_yday = static_cast<int>((day - sys_days{date.year() / January / 1}).count());
  local.tm_gmtoff = offset;
  return true;
}

std::size_t local_instants(const zone_rules& zone, std::int64_t local,
                           std::int64_t (&instants)[2]) {
  // Every offset lies within a day of UTC, so the instants lie within a day
  // of `local`, where the zone has the offsets of the day before and the
  // day after.
  const std::int32_t before = zone.utc_offset(local - day_seconds);
  const std::int32_t after = zone.utc_offset(local + day_seconds);
  std::size_t count = 0;
  if (zone.utc_offset(local - before) == before) instants[count++] = local - before;
  if (after != before && zone.utc_offset(local - after) == after) instants[count++] = local - after;
  // Two transitions within the two days (a rule may put them days apart,
  // or hours) can make the later offset the smaller one.
  if (count == 2 && instants[0] > instants[1]) std::swap(instants[0], instants[1]);
  return count;
}

const zone_rules& process_zone() {
  static const zone_rules& zone = resolve_process_zone();
  return zone;
}

const zone_rules* zone_named(std::string_view name) {
  return name.empty() ? &process_zone() : find_zone(name);
}

std::string unknown_zone_text(std::string_view name) {
  return "unknown time zone '" + std::string(name) +
         "' (an IANA name of the tz database, such as Asia/Tokyo)";
}

}  // namespace inspect
