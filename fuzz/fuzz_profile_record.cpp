// One profile record through its decoder, with or without a clock
// correlation to turn its timestamp into calendar time.
//
// Input: the timesync kind (u8: none, a full pair, a pair missing its
// calendar value, a property that is not a dictionary), the pair (tmx and
// calendar, i64 LE each), then the 48-byte record (zero-padded when short).

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/quiet_output.h"
#include "liblog_zol/ZOLProfile.h"
#include "quandor/profile_retrieval.h"
#include "tmxsim/control.h"

namespace {

std::int64_t read_i64(const std::uint8_t* bytes) {
  std::uint64_t value = 0;
  std::memcpy(&value, bytes, sizeof value);  // the fuzzer's host is little-endian
  return static_cast<std::int64_t>(value);
}

std::string timesync_phone(std::uint8_t kind, std::int64_t tmx, std::int64_t calendar) {
  const std::string head =
      R"({"services":[{"name":"CorvelTMXTimesync","class":"CorvelTMXTimesync",)"
      R"("properties":{"timesync":)";
  const std::string tail = "}}]}";
  switch (kind % 4) {
    case 1:
      return head + R"({"tmx":)" + std::to_string(tmx) + R"(,"calendar":)" +
             std::to_string(calendar) + "}" + tail;
    case 2:
      return head + R"({"tmx":)" + std::to_string(tmx) + "}" + tail;
    case 3:
      return head + std::to_string(calendar) + tail;
    default:
      return "{}";
  }
}

// Loading a phone is the dear part; most inputs keep the last one.
void use_phone(const std::string& json) {
  static std::string loaded;
  if (json == loaded) return;
  if (!tmxsim::load_description(json, "fuzz").empty()) __builtin_trap();
  loaded = json;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  silence_reports();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::array<std::uint8_t, 1 + 16 + profile_record_size> input{};
  std::copy_n(data, std::min(size, input.size()), input.begin());
  use_phone(timesync_phone(input[0], read_i64(&input[1]), read_i64(&input[9])));

  // The record on the heap with nothing around it: one byte too far is caught.
  const auto record = std::make_unique<std::uint8_t[]>(profile_record_size);
  std::copy_n(&input[17], profile_record_size, record.get());
  (void)format_profile_record(record.get());
  print_profile_record(record.get());

  const tmxsim::audit_counts held = tmxsim::audit();
  if (held.io_objects != 0 || held.connections != 0 || held.cf_objects != 0 ||
      held.misuse != 0)
    __builtin_trap();
  return 0;
}
