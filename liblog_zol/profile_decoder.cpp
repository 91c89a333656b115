#include "liblog_zol/profile_decoder.h"

#include "liblog_zol/calendar_time.h"
#include "liblog_zol/text_shapes.h"

namespace zol {

std::string profile_decoder::format(const profile_record& record) const {
  const std::uint32_t category = record.category_id();
  const std::uint32_t component = record.component_id();
  const std::uint32_t event = record.event_id();
  const name_text category_text = category_name(category);
  const name_text component_text = component_name(component);
  const name_text event_text = event_name(component, event);
  calendar_text calendar;
  const bool has_calendar = make_calendar_time(record.timestamp(), calendar);

  line_builder line;
  line << "{ ";
  line << key_text{"category"};
  line.width(8) << quoted_text{category_text.view()} << ",";
  line << key_text{"component"};
  line.width(8) << quoted_text{component_text.view()} << ",";
  line << key_text{"event"};
  line.width(12) << quoted_text{event_text.view()} << ",";
  line << key_text{"timestamp"};
  line.width(10) << record.timestamp() << ",";
  line << key_text{"sequence_num"};
  line.width(10) << record.sequence_number() << ",";
  write_payload(line, record);
  // "type-id" twice: first the whole word, last the type id alone.
  line << key_text{"type-id"} << record.type_word() << ",";
  line << key_text{"category-id"} << category << ",";
  line << key_text{"component-id"} << component << ",";
  line << key_text{"event-id"} << event << ",";
  line << key_text{"type-id"} << record.type_id() << ",";
  line << key_text{"binary-data"}
       << byte_list{record.bytes().bytes(0, profile_record_size)};
  if (has_calendar)
    line << "," << key_text{"calendar-time"} << quoted_text{calendar.view()};
  line << "}";
  return line.take();
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
