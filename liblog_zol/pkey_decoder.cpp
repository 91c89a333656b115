#include <cstdint>

#include "liblog_zol/category_decoders.h"
#include "liblog_zol/payload_fields.h"

namespace zol {
namespace {

constexpr std::uint32_t latency_component = pkey_latency_component;

constexpr std::uint32_t event_record = pkey_event_type;
constexpr std::uint32_t trace_record = pkey_trace_point_type;
constexpr std::uint32_t context_record = pkey_context_type;

constexpr std::uint32_t input_packet_event = 2;
constexpr std::uint32_t status_event = 3;

// All fields below are unsigned, at record offsets.

constexpr payload_field input_packet[] = {
    number_field("reportID", 18, 1, 10),
    number_field("buttonState", 19, 1, 10),
    number_field("fingerDetect", 20, 1, 10),
    number_field("pressCount", 22, 1, 10),
    number_field("longPress", 23, 1, 10),
    number_field("terminalEvent", 24, 1, 10),
    number_field("speed", 25, 1, 10),
    number_field("stage", 26, 1, 10),
    number_field("stageProgress", 27, 4, 10),
    number_field("force", 31, 4, 10),
};

constexpr payload_field status[] = {
    number_field("status-timestamp", 18, 4, 10),
    number_field("fingerState", 26, 1, 10),
    number_field("buttonState", 27, 1, 10),
    number_field("buttonProgress", 28, 4, 10),
    number_field("clickCount", 33, 1, 10),
    number_field("clickCountIsTerminal", 34, 1, 10),
    number_field("clickIsLong", 35, 1, 10),
    number_field("clickSpeed", 36, 1, 10),
};

// The fields after the trace point name.
constexpr payload_field trace_arguments[] = {
    number_field("thread", 20, 4, 10),
    number_field("arg1", 24, 4, 10),
    number_field("arg2", 28, 4, 10),
    number_field("arg3", 32, 4, 10),
    number_field("arg4", 36, 4, 10),
};
constexpr std::uint8_t trace_id_offset = 16;
constexpr std::uint8_t trace_name_width = 25;

// Context snapshots: no widths.

constexpr payload_field context_v3[] = {
    number_field("context-version", 16, 2, 0),
    number_field("currentContext0", 18, 1, 0),
    number_field("currentContext1", 19, 1, 0),
    number_field("ampsEnabled", 20, 1, 0),
    number_field("enabled", 21, 1, 0),
    number_field("mode", 22, 4, 0),
    number_field("scan_time", 26, 4, 0),
    number_field("active_scan_interval", 30, 4, 0),
    number_field("background_scan_interval", 34, 4, 0),
    number_field("fingerDetect", 38, 1, 0),
    number_field("buttonState", 39, 1, 0),
    number_field("pressCount", 40, 1, 0),
    number_field("longPress", 41, 1, 0),
    number_field("terminalEvent", 42, 1, 0),
    number_field("speed", 43, 1, 0),
    number_field("stage", 44, 1, 0),
};

constexpr payload_field context_v4[] = {
    number_field("context-version", 16, 2, 0),
    number_field("mclk_zol_enabled", 18, 1, 0),
    number_field("mclk_ap_enabled", 19, 1, 0),
    number_field("pellam_zol_enabled", 20, 1, 0),
    number_field("pellam_ap_enabled", 21, 1, 0),
    number_field("pellamBusy", 22, 1, 0),
    number_field("enableLYN", 23, 1, 0),
    number_field("enableSpkr", 24, 1, 0),
    number_field("mclk_on", 25, 1, 0),
    number_field("pellam_on", 26, 1, 0),
    number_field("pellamPending", 27, 1, 0),
    number_field("ampsEnabling", 28, 1, 0),
    number_field("vexa_ready", 29, 1, 0),
    number_field("ampsPrewarming", 30, 1, 0),
    number_field("ampsDisabling", 31, 1, 0),
    number_field("ampsPending", 32, 1, 0),
    number_field("clickState", 33, 1, 0),
    number_field("clickSpeed", 34, 1, 0),
    number_field("test_mode", 35, 1, 0),
    number_field("cl_enable", 36, 1, 0),
    number_field("cl_zol_enable", 37, 1, 0),
    number_field("cl_ap_enable", 38, 1, 0),
    number_field("pellam_ready", 39, 1, 0),
    number_field("apState0", 40, 1, 0),
    number_field("apState1", 41, 1, 0),
    number_field("zolState0", 42, 1, 0),
    number_field("zolState1", 43, 1, 0),
    number_field("state0", 44, 1, 0),
    number_field("state1", 45, 1, 0),
};

constexpr payload_field context_v5[] = {
    number_field("context-version", 16, 2, 0),
    number_field("currentContext0", 18, 1, 0),
    number_field("currentContext1", 19, 1, 0),
    number_field("ampsEnabled", 20, 1, 0),
    number_field("enabled", 21, 1, 0),
    number_field("scan_period", 22, 4, 0),
    number_field("scan_time", 26, 4, 0),
    number_field("fingerDetect", 30, 1, 0),
    number_field("buttonState", 31, 1, 0),
    number_field("pressCount", 32, 1, 0),
    number_field("longPress", 33, 1, 0),
    number_field("terminalEvent", 34, 1, 0),
    number_field("speed", 35, 1, 0),
    number_field("stage", 36, 1, 0),
};

constexpr payload_field context_v7[] = {
    number_field("context-version", 16, 2, 0),
    number_field("mclk_zol_enabled", 18, 1, 0),
    number_field("mclk_ap_enabled", 19, 1, 0),
    number_field("pellam_zol_enabled", 20, 1, 0),
    number_field("pellam_ap_enabled", 21, 1, 0),
    number_field("pellamBusy", 22, 1, 0),
    number_field("enableLYN", 23, 1, 0),
    number_field("enableSpkr", 24, 1, 0),
    number_field("mclk_on", 25, 1, 0),
    number_field("pellam_on", 26, 1, 0),
    number_field("pellamPending", 27, 1, 0),
    number_field("vexa_ready", 28, 1, 0),
    number_field("ampsState", 29, 1, 0),
    number_field("clickState", 30, 1, 0),
    number_field("clickSpeed", 31, 1, 0),
    number_field("test_mode", 32, 1, 0),
    number_field("cl_enable", 33, 1, 0),
    number_field("cl_zol_enable", 34, 1, 0),
    number_field("cl_ap_enable", 35, 1, 0),
    number_field("pellam_ready", 36, 1, 0),
    number_field("apState0", 37, 1, 0),
    number_field("apState1", 38, 1, 0),
    number_field("zolState0", 39, 1, 0),
    number_field("zolState1", 40, 1, 0),
    number_field("state0", 41, 1, 0),
    number_field("state1", 42, 1, 0),
};

struct context_layout {
  std::uint16_t version;
  std::span<const payload_field> fields;
  bool generic_after;  // versions 3 and 4 are followed by the generic payload
};

constexpr context_layout context_layouts[] = {
    {3, context_v3, true},
    {4, context_v4, true},
    {5, context_v5, false},
    {7, context_v7, false},
};
constexpr std::uint8_t context_version_offset = 16;

}  // namespace

name_text pkey_decoder::component_name(std::uint32_t component) const {
  return lookup_name(pkey_components, component);
}

name_text pkey_decoder::event_name(std::uint32_t component, std::uint32_t event) const {
  if (component == latency_component) return lookup_name(pkey_latency_checkpoints, event);
  return lookup_name(pkey_events, event);
}

// The latency component's trace points are its checkpoints.
name_text pkey_decoder::trace_point_name(std::uint32_t component, std::uint32_t trace) const {
  if (component != latency_component) return lookup_name(pkey_trace_points, trace);
  return event_name(latency_component, trace);
}

// The decoder's own fields come first, the generic payload after them; an
// event record of another event gets the generic payload twice.
void pkey_decoder::write_payload(record_printer& printer, const profile_record& record) const {
  switch (record.type_id()) {
    case event_record:
      if (record.event_id() == status_event) {
        write_fields(printer, record, status);
      } else if (record.event_id() == input_packet_event) {
        write_fields(printer, record, input_packet);
      } else {
        profile_decoder::write_payload(printer, record);
      }
      break;
    case context_record: {
      const std::uint16_t version = record.bytes().u16(context_version_offset);
      for (const context_layout& layout : context_layouts) {
        if (layout.version != version) continue;
        write_fields(printer, record, layout.fields);
        if (!layout.generic_after) return;
      }
      break;
    }
    case trace_record: {
      const name_text name = trace_point_name(
          record.component_id(), record.bytes().u32(trace_id_offset));
      printer.field("trace", trace_name_width, field_value::of_name(name.view()));
      write_fields(printer, record, trace_arguments);
      break;
    }
    default:
      break;
  }
  profile_decoder::write_payload(printer, record);
}

}  // namespace zol
