#include "liblog_zol/profile_decoder.h"

#include "liblog_zol/calendar_time.h"
#include "liblog_zol/text_printer.h"

namespace zol {

std::string profile_decoder::format(const profile_record& record, clock_source& clock) const {
  text_printer printer;
  decode(printer, record, clock);
  return printer.take();
}

void profile_decoder::decode(record_printer& printer, const profile_record& record,
                             clock_source& clock) const {
  timesync_pair pair;
  const bool has_calendar = clock.read(pair);
  const std::uint64_t calendar = has_calendar ? calendar_microseconds(record.timestamp(), pair) : 0;

  printer.begin({
      .decoder = *this,
      .type_word = record.type_word(),
      .timestamp = record.timestamp(),
      .sequence_number = record.sequence_number(),
  });
  write_payload(printer, record);
  printer.end(record.bytes().bytes(0, profile_record_size), has_calendar ? &calendar : nullptr);
}

header_names record_header::names() const {
  const std::uint32_t component = component_id();
  return {decoder.category_name(category_id()), decoder.component_name(component),
          decoder.event_name(component, event_id())};
}

name_text profile_decoder::category_name(std::uint32_t category) const {
  return lookup_name(category_names, category);
}

name_text profile_decoder::component_name(std::uint32_t component) const {
  return name_text(component);
}

name_text profile_decoder::event_name(std::uint32_t, std::uint32_t event) const {
  return name_text(event);
}

}  // namespace zol
