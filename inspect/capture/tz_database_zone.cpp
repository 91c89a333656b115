// Zones of the machine's tz database, through date/tz. The database lists a
// zone's changes up to some year (2037 in Debian's files) and ends with the
// POSIX rule for the years after; the C library follows that rule to 2554
// and beyond, so the zone does too.

#include <date/tz.h>

#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <string>

#include "inspect/capture/zone_rules.h"

namespace inspect {
namespace {

constexpr std::string_view zone_directory = "/usr/share/zoneinfo/";

// The last line of a zone file: its rule after the changes it lists.
std::string footer_of(std::string_view name) {
  std::ifstream file(std::string(zone_directory).append(name), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (bytes.size() < 2 || bytes.back() != '\n') return {};
  const std::size_t start = bytes.rfind('\n', bytes.size() - 2);
  return start == std::string::npos ? std::string() : bytes.substr(start + 1, bytes.size() - start - 2);
}

class tz_database_zone final : public zone_rules {
 public:
  tz_database_zone(const date::time_zone& zone, std::string_view name) : zone_(zone) {
    const std::string footer = footer_of(name);
    // A rule without daylight time is the offset the last change gave.
    if (footer.find(',') == std::string::npos) return;
    footer_ = posix_zone(footer);
    const date::sys_seconds far = date::sys_days{date::year{3000} / 1 / 1};
    footer_from_ = zone_.get_info(far).begin.time_since_epoch().count();
  }

  std::int32_t utc_offset(std::int64_t seconds) const override {
    if (footer_ && seconds >= footer_from_) return footer_->utc_offset(seconds);
    const date::sys_seconds instant{std::chrono::seconds{seconds}};
    return static_cast<std::int32_t>(zone_.get_info(instant).offset.count());
  }

 private:
  const date::time_zone& zone_;
  std::unique_ptr<const zone_rules> footer_;
  std::int64_t footer_from_ = 0;
};

}  // namespace

const zone_rules* find_zone(std::string_view name) {
  static std::mutex mutex;
  static std::map<std::string, std::unique_ptr<const tz_database_zone>, std::less<>> zones;
  const std::lock_guard lock(mutex);
  if (const auto found = zones.find(name); found != zones.end()) return found->second.get();
  const date::time_zone* zone = nullptr;
  try {
    zone = date::locate_zone(name);
  } catch (const std::exception&) {
    return nullptr;  // no such zone, or no database
  }
  auto made = std::make_unique<const tz_database_zone>(*zone, name);
  return zones.emplace(std::string(name), std::move(made)).first->second.get();
}

}  // namespace inspect
