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

#include "fuzz/fuzz_support.h"
#include "liblog_zol/ZOLProfile.h"
#include "quandor/profile_retrieval.h"

namespace {

// The phone for the input's first 17 bytes; the fuzzer's host is little-endian.
std::string timesync_phone(const std::uint8_t* input) {
  std::int64_t pair[2];
  std::memcpy(pair, input + 1, sizeof pair);
  const std::string tmx = R"({"tmx":)" + std::to_string(pair[0]);
  const std::string calendar = std::to_string(pair[1]);
  // By kind: none, a full pair, a pair missing its calendar value, not a dictionary.
  const std::string kinds[] = {"", tmx + R"(,"calendar":)" + calendar + "}", tmx + "}", calendar};
  if (input[0] % 4 == 0) return "{}";
  return R"({"services":[{"name":"CorvelTMXTimesync","class":"CorvelTMXTimesync",)"
         R"("properties":{"timesync":)" + kinds[input[0] % 4] + "}}]}";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::array<std::uint8_t, 1 + 16 + profile_record_size> input{};
  std::copy_n(data, std::min(size, input.size()), input.begin());
  // Loading a phone is the dear part; most inputs keep the last one.
  static std::string loaded;
  const std::string phone = timesync_phone(input.data());
  if (phone != loaded && !tmxsim::load_description(phone, "fuzz").empty()) __builtin_trap();
  loaded = phone;
  // The record on the heap with nothing around it: one byte too far is caught.
  const auto record = std::make_unique<std::uint8_t[]>(profile_record_size);
  std::copy_n(&input[17], profile_record_size, record.get());
  (void)format_profile_record(record.get());
  print_profile_record(record.get());
  trap_unless_nothing_held();
  return 0;
}
