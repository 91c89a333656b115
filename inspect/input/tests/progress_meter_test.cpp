#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "inspect/input/progress_meter.h"
#include "inspect/input/tests/test_inputs.h"

namespace {

using updates = std::vector<std::pair<int, std::uint64_t>>;  // ms after the start, bytes read

TEST(ProgressMeter, ShowsBigInputsAtMostFiveTimesASecond) {
  const std::string line = "\rkelvra-inspect: reading f: ", clear = "\r\033[K";
  // Name, input size, updates, what shows.
  const std::vector<std::tuple<std::string, std::uint64_t, updates, std::string>> cases = {
      {"known size", 480'000'000, {{250, 206'400'000}}, line + "43% (206 of 480 MB)" + clear},
      {"unknown size", 0, {{250, 206'400'000}}, line + "206 MB read" + clear},
      {"small", (32 << 20) - 1, {{250, 1}, {1000, 2}}, ""},
      {"quick", 0, {{199, 1}}, ""},
      {"too soon after the last", 100'000'000, {{200, 0}, {399, 50'000'000}, {400, 100'000'000}},
       line + "0% (0 of 100 MB)" + line + "100% (100 of 100 MB)" + clear},
  };
  for (const auto& [name, size, steps, shown] : cases) {
    std::FILE* out = std::tmpfile();
    const auto start = inspect::progress_meter::clock::now();
    inspect::progress_meter meter("f", out, start);
    for (const auto& [ms, read] : steps) {
      meter.update(read, size, start + std::chrono::milliseconds(ms));
    }
    meter.clear();
    EXPECT_EQ(inspect_test::read_all(out), shown) << name;
  }
}

}  // namespace
