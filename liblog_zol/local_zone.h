#pragma once

// The time zone calendar texts are printed in. The collector prints in the C
// library's (TZ, or the machine's); the desk tools hand in the zone of the
// phone a capture came from.

#include <cstdint>
#include <ctime>

namespace zol {

class local_zone {
 public:
  // The local time of `seconds` since 1970 UTC, with its UTC offset in
  // tm_gmtoff; false when it has none.
  virtual bool local_time(std::int64_t seconds, std::tm& local) const = 0;

 protected:
  ~local_zone() = default;
};

// localtime_r's zone, read once.
const local_zone& c_library_zone() noexcept;

}  // namespace zol
