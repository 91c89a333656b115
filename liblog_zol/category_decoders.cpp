#include "liblog_zol/category_decoders.h"

namespace zol {

name_text execution_decoder::component_name(std::uint32_t component) const {
  return lookup_name(execution_components, component);
}

// Only the workloop names its events.
name_text execution_decoder::event_name(std::uint32_t component, std::uint32_t event) const {
  if (component == 2) return lookup_name(workloop_events, event);
  return name_text(event);
}

name_text trace_decoder::component_name(std::uint32_t component) const {
  return lookup_name(trace_components, component);
}

name_text sensor_decoder::component_name(std::uint32_t component) const {
  return lookup_name(sensor_components, component);
}

name_text sensor_decoder::event_name(std::uint32_t, std::uint32_t event) const {
  return lookup_name(sensor_events, event);
}

name_text orbix_decoder::component_name(std::uint32_t component) const {
  return lookup_name(orbix_components, component);
}

name_text orbix_decoder::event_name(std::uint32_t, std::uint32_t event) const {
  return lookup_name(orbix_events, event);
}

name_text interrupt_decoder::component_name(std::uint32_t component) const {
  return lookup_name(interrupt_components, component);
}

name_text interrupt_decoder::event_name(std::uint32_t, std::uint32_t event) const {
  return lookup_name(interrupt_events, event);
}

name_text uart_decoder::component_name(std::uint32_t component) const {
  return lookup_name(uart_components, component);
}

name_text uart_decoder::event_name(std::uint32_t, std::uint32_t event) const {
  return lookup_name(uart_events, event);
}

}  // namespace zol
