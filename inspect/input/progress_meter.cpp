#include "inspect/input/progress_meter.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace inspect {

namespace {

constexpr auto update_interval = std::chrono::milliseconds(200);
constexpr std::uint64_t smallest_shown = std::uint64_t{32} << 20;
constexpr std::uint64_t megabyte = 1000 * 1000;

}  // namespace

progress_meter::progress_meter(std::string label, std::FILE* out, clock::time_point start)
    : label_(std::move(label)), out_(out), next_(start + update_interval) {}

progress_meter::~progress_meter() { clear(); }

void progress_meter::update(std::uint64_t consumed, std::uint64_t size, clock::time_point now) {
  if (!due(now) || (size != 0 && size < smallest_shown)) return;
  next_ = now + update_interval;
  std::array<char, 96> figures{};
  if (size == 0) {
    std::snprintf(figures.data(), figures.size(), "%llu MB read",
                  static_cast<unsigned long long>(consumed / megabyte));
  } else {
    // Never past 100%, whatever the source counts.
    const std::uint64_t done = std::min(consumed, size);
    std::snprintf(figures.data(), figures.size(), "%llu%% (%llu of %llu MB)",
                  static_cast<unsigned long long>(done * 100 / size),
                  static_cast<unsigned long long>(done / megabyte),
                  static_cast<unsigned long long>(size / megabyte));
  }
  std::fprintf(out_, "\rkelvra-inspect: reading %s: %s", label_.c_str(), figures.data());
  std::fflush(out_);
  shown_ = true;
}

void progress_meter::update_count(std::uint64_t done, std::uint64_t total, clock::time_point now) {
  if (!due(now)) return;
  next_ = now + update_interval;
  std::fprintf(out_, "\rkelvra-inspect: reading %s: %llu of %llu", label_.c_str(),
               static_cast<unsigned long long>(done), static_cast<unsigned long long>(total));
  std::fflush(out_);
  shown_ = true;
}

void progress_meter::clear() {
  if (!shown_) return;
  std::fputs("\r\033[K", out_);
  std::fflush(out_);
  shown_ = false;
}

}  // namespace inspect
