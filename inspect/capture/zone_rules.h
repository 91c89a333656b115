#pragma once

// Time zones as data. A capture's calendar texts were printed in its phone's
// zone; reading them back needs every instant's UTC offset, so that the
// instants a local time names come from arithmetic, not from asking the C
// library year by year. A zone is immutable once made and shared by every
// capture read in it, on any thread.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "liblog_zol/local_zone.h"

namespace inspect {

class zone_rules : public zol::local_zone {
 public:
  virtual ~zone_rules() = default;
  // The UTC offset at `seconds` since 1970 UTC, in seconds.
  virtual std::int32_t utc_offset(std::int64_t seconds) const = 0;
  // From the offset, by calendar arithmetic.
  bool local_time(std::int64_t seconds, std::tm& local) const override;
};

// The instants (seconds since 1970 UTC) whose local time is `local`
// (seconds since 1970 counted as if local time were UTC), the earlier
// first: none in an hour the clocks skip, two in one they repeat. Assumes
// at most one change of offset within a day of it, as in every zone.
std::size_t local_instants(const zone_rules& zone, std::int64_t local, std::int64_t (&instants)[2]);

// The zone of an IANA name (Asia/Tokyo) in the machine's tz database; null
// when there is none such.
const zone_rules* find_zone(std::string_view name);

// The zone of a POSIX TZ rule ("EST5EDT,M3.2.0,M11.1.0", "JST-9"), as the C
// library reads TZ; null when it does not read as one.
std::unique_ptr<const zone_rules> posix_zone(std::string_view rule);

// The process's zone as the C library reads it: TZ, or the machine's. The
// tz database's zone when TZ names one (or, without TZ, when
// /etc/localtime does); otherwise localtime_r's.
const zone_rules& process_zone();

// `name`'s zone, the process's for an empty name; null for an unknown name.
const zone_rules* zone_named(std::string_view name);

// "unknown time zone 'NAME' (...)": why a name is refused.
std::string unknown_zone_text(std::string_view name);

}  // namespace inspect
