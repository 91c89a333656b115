#include "liblog_zol/local_zone.h"

namespace zol {
namespace {

class c_library final : public local_zone {
 public:
  // localtime_r skips the time-zone file check that localtime makes on
  // every call; the zone is read once.
  c_library() { tzset(); }

  bool local_time(std::int64_t seconds, std::tm& local) const override {
    const auto time = static_cast<std::time_t>(seconds);
    return localtime_r(&time, &local) != nullptr;
  }
};

}  // namespace

const local_zone& c_library_zone() noexcept {
  static const c_library zone;
  return zone;
}

}  // namespace zol
