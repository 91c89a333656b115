#include "liblog_zol/name_tables.h"

#include <charconv>
#include <iterator>

namespace zol {
namespace {

// Rising ids, and names of printable ASCII without a quote or a backslash:
// the JSON printer writes a name as it stands.
constexpr bool ascending(std::span<const id_name> table) {
  for (std::size_t i = 1; i < table.size(); ++i)
    if (table[i - 1].id >= table[i].id) return false;
  for (const id_name& row : table)
    for (const char c : row.name)
      if (c < 0x20 || c > 0x7e || c == '"' || c == '\\') return false;
  return true;
}

// Guards for the transcription: the row counts the tables are known by, and
// the order and names every table keeps.
static_assert(std::size(category_names) == 9 && ascending(category_names));
static_assert(std::size(execution_components) == 5 && ascending(execution_components));
static_assert(std::size(workloop_events) == 2 && ascending(workloop_events));
static_assert(std::size(trace_components) == 2 && ascending(trace_components));
static_assert(std::size(sensor_components) == 7 && ascending(sensor_components));
static_assert(std::size(sensor_events) == 13 && ascending(sensor_events));
static_assert(std::size(orbix_components) == 1 && ascending(orbix_components));
static_assert(std::size(orbix_events) == 3 && ascending(orbix_events));
static_assert(std::size(nimbrel_components) == 1 && ascending(nimbrel_components));
static_assert(std::size(nimbrel_events) == 2 && ascending(nimbrel_events));
static_assert(std::size(interrupt_components) == 1 && ascending(interrupt_components));
static_assert(std::size(interrupt_events) == 1 && ascending(interrupt_events));
static_assert(std::size(uart_components) == 3 && ascending(uart_components));
static_assert(std::size(uart_events) == 3 && ascending(uart_events));
static_assert(std::size(pkey_components) == 5 && ascending(pkey_components));
static_assert(std::size(pkey_latency_checkpoints) == 8 && ascending(pkey_latency_checkpoints));
static_assert(std::size(pkey_events) == 8 && ascending(pkey_events));
static_assert(std::size(pkey_trace_points) == 80 && ascending(pkey_trace_points));
static_assert(ascending(payload_types) && ascending(nimbrel_types) && ascending(pkey_types));

}  // namespace

name_text::name_text(std::uint32_t id) noexcept {
  size_ = static_cast<std::size_t>(
      std::to_chars(digits_, digits_ + sizeof digits_, id).ptr - digits_);
}

name_text lookup_name(std::span<const id_name> table, std::uint32_t id) noexcept {
  for (const id_name& row : table)
    if (row.id == id) return name_text(row.name);
  return name_text(id);
}

name_text type_name(std::uint32_t category, std::uint32_t type) noexcept {
  std::span<const id_name> own;
  if (category == nimbrel_category) own = nimbrel_types;
  if (category == pkey_category) own = pkey_types;
  for (const id_name& row : own)
    if (row.id == type) return name_text(row.name);
  return lookup_name(payload_types, type);
}

}  // namespace zol
