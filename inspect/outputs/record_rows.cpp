#include "inspect/outputs/record_rows.h"

#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/json_printer.h"

namespace inspect {

void write_record_rows(const capture_model& model, std::size_t harvest, std::string_view leading,
                       std::uint64_t& ordinal, const std::function<void(std::string_view row)>& each) {
  const harvest_model& h = model.harvests[harvest];
  zol::json_printer printer;
  printer.set_leading(leading);
  printer.set_zone(*model.zone);
  zol::no_clock none;
  for (const record_row& row : h.facts.records) {
    zol::record_origin origin;
    origin.ordinal = ordinal++;
    origin.source = source_name(row.source);
    printer.set_origin(origin);
    std::optional<zol::fixed_clock> clock;
    if (row.pair) clock.emplace(*row.pair);
    decode_profile_record(printer, record_bytes(h, row),
                          clock ? static_cast<zol::clock_source&>(*clock) : none);
    each(printer.view());
  }
}

}  // namespace inspect
