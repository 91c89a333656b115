// Fleet table rows into the gate's samples: any bytes, split into lines and
// handed to each table in turn, either side or split by a label, give
// samples or named faults, never a crash; every sample is a number.

#include <cmath>
#include <cstdint>
#include <string_view>

#include "inspect/gate/fleet_samples.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  using namespace inspect::gate;
  const std::uint8_t mode = data[0];
  std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  sample_builder builder(mode & 1 ? parse_split("build=A,B") : std::nullopt);
  row_place place;
  place.side = mode & 1 ? -1 : (mode >> 1) & 1;
  place.group = "fuzz";
  if (mode & 4) place.partition = {{"build", "A"}};
  std::uint64_t number = 0;
  const table_kind tables[] = {table_kind::harvests, table_kind::failures, table_kind::unreadable};
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    builder.add_row(tables[number % 3], line, place, ++number);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  }
  for (const side_samples& side : builder.finish())
    for (const auto& [name, values] : side.values)
      for (const double v : values)
        if (std::isnan(v)) __builtin_trap();
  return 0;
}
