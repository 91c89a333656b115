#include <array>

#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/category_decoders.h"

namespace zol {
namespace {

constinit const execution_decoder execution{};
constinit const trace_decoder trace{};
constinit const sensor_decoder sensor{};
constinit const orbix_decoder orbix{};
constinit const nimbrel_decoder nimbrel{};
constinit const interrupt_decoder interrupt{};
constinit const uart_decoder uart{};
constinit const pkey_decoder pkey{};
// "control" has no decoder of its own; unknown categories get a separate one.
constinit const profile_decoder control{};
constinit const profile_decoder unknown_category{};

// Indexed by category id.
constexpr std::array<const profile_decoder*, 9> decoder_table = {
    &execution, &trace, &sensor, &orbix, &nimbrel, &interrupt, &uart, &pkey, &control,
};

}  // namespace

const profile_decoder& decoder_for_category(std::uint32_t category) noexcept {
  if (category < decoder_table.size() && decoder_table[category])
    return *decoder_table[category];
  return unknown_category;
}

}  // namespace zol

std::string format_profile_record(const std::uint8_t* record, zol::clock_source& clock) {
  const zol::profile_record view(record);
  return zol::decoder_for_category(view.category_id()).format(view, clock);
}

void decode_profile_record(zol::record_printer& printer, const std::uint8_t* record,
                           zol::clock_source& clock) {
  const zol::profile_record view(record);
  zol::decoder_for_category(view.category_id()).decode(printer, view, clock);
}
