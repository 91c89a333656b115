#include <array>

#include "liblog_zol/payload_fields.h"
#include "liblog_zol/profile_decoder.h"

namespace zol {
namespace {

// Offsets are record offsets; the payload starts at 16. The repeated fields
// and the constants are part of the format.

constexpr payload_field packet_fragment[] = {
    number_field("subtype", 16, 2, 10),
    number_field("packet-size", 18, 2, 10),
    number_field("data-length", 20, 2, 10),
    number_field("data-offset", 22, 2, 10),
    bytes_field("raw-data", 24, 24, 10, /*count_at=*/20),
};

constexpr payload_field small_packet[] = {
    number_field("subtype", 16, 2, 10),
    constant_field("packet-size", 30, 10),
    constant_field("data-length", 30, 10),
    constant_field("data-offset", 0, 10),
    bytes_field("raw-data", 18, 30, 10),
};

constexpr payload_field arguments[] = {
    number_field("arg1", 16, 4, 10),
    number_field("arg2", 20, 4, 10),
    number_field("arg3", 24, 4, 10),
    number_field("arg4", 28, 4, 10),
    number_field("arg5", 32, 4, 10),
    number_field("arg6", 36, 4, 10),
    hex_field("xarg1", 16, 10),
    hex_field("xarg2", 20, 10),
    hex_field("xarg3", 24, 10),
    hex_field("xarg4", 28, 10),
    hex_field("xarg5", 32, 10),
    hex_field("xarg6", 36, 10),
};

constexpr payload_field trigger[] = {
    constant_field("trigger", 1, 0),
    number_field("thread-id", 20, 4, 10),
    number_field("arg", 20, 4, 10),
};

constexpr payload_field function_timing[] = {
    number_field("function-id", 16, 4, 10),
    number_field("extra-id", 20, 4, 10),
    number_field("thread-id", 24, 4, 10),
    number_field("duration", 28, 4, 10),
    number_field("depth", 32, 4, 10),
    number_field("thread_duration", 36, 4, 10),
};

constexpr payload_field client_configuration[] = {
    text_field("name", 36, 12, 16),
    number_field("client", 16, 4, 10),
    number_field("report-interval", 20, 4, 10),
    number_field("batch-interval", 24, 4, 10),
    number_field("threshold", 28, 4, 10),
    number_field("time-limit", 32, 4, 10),
};

constexpr payload_field task_function[] = {
    text_field("function", 32, 16, 10),
    number_field("arg", 28, 4, 10),
    number_field("task", 16, 4, 10),
    number_field("thread", 20, 4, 10),
    number_field("duration", 24, 4, 10),
};

constexpr payload_field table_entry[] = {
    number_field("global-id", 16, 8, 10),
    number_field("entry-id", 24, 8, 10),
    text_field("entry", 24, 8, 10),
    number_field("arg1", 32, 4, 10),
    number_field("arg2", 36, 4, 10),
};

constexpr payload_field dispatcher_configuration[] = {
    text_field("name", 36, 12, 16),
    number_field("sample-interval", 24, 4, 10),
    number_field("report-interval", 28, 4, 10),
    number_field("batch-interval", 32, 4, 10),
    number_field("next-dispatch", 16, 8, 10),
};

// Indexed by type id; ids past the end and empty entries have no payload.
constexpr std::array<std::span<const payload_field>, 13> layouts = {{
    {},
    packet_fragment,
    small_packet,
    arguments,
    trigger,
    function_timing,
    {},
    {},
    client_configuration,
    task_function,
    {},
    table_entry,
    dispatcher_configuration,
}};

}  // namespace

void profile_decoder::write_payload(record_printer& printer,
                                    const profile_record& record) const {
  const std::uint32_t type = record.type_id();
  if (type < layouts.size()) write_fields(printer, record, layouts[type]);
}

}  // namespace zol
