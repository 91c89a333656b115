#include <algorithm>
#include <charconv>
#include <ostream>
#include <sstream>

#include "quandor/layouts/field_rows.h"

namespace layouts {
namespace {

constexpr std::size_t speed_group_size = 400;
constexpr std::size_t entry_size = 25;
constexpr std::size_t entries = std::size(click_speeds) * std::size(button_states);
static_assert(std::size(button_states) * entry_size == speed_group_size);
static_assert(std::size(click_speeds) * speed_group_size == assets_size);
static_assert(entries + 1 == assets_lines);

constexpr std::string_view length_start = "Length: ";
constexpr std::string_view length_end = ", expected ";

constexpr field_row asset_rows[] = {
    {"enable ", value_form::flag, 0, "enable"},
    {", slot ", value_form::i32, 21, "slot"},
    {", gain ", value_form::fixed_double, 1, "gain", {}, {}, 0, "gain_raw"},
    {", min ", value_form::u64, 5, "min"},
    {", max ", value_form::u64, 13, "max"},
};

// Entries run speed by speed, each speed's group through the button states.
std::string_view speed_of(std::size_t entry) {
  return click_speeds[entry / std::size(button_states)];
}
std::string_view state_of(std::size_t entry) {
  return button_states[entry % std::size(button_states)];
}

std::string asset_title(std::size_t entry) {
  std::string title = "ASSET [";
  title += speed_of(entry);
  title += "][";
  title += state_of(entry);
  title += ']';
  return title;
}

}  // namespace

void write_assets(std::ostream& out, std::uint64_t length, std::span<const std::uint8_t> reply) {
  out << length_start << length << length_end << assets_size << std::endl;
  // A short reply leaves zeros behind it; a long one is cut to the table.
  std::array<std::uint8_t, assets_size> table{};
  const auto delivered = std::min<std::uint64_t>(length, assets_size);
  std::copy_n(reply.begin(), std::min(reply.size(), static_cast<std::size_t>(delivered)),
              table.begin());
  const byte_reader entries_of(table);
  for (std::size_t entry = 0; entry < entries; ++entry) {
    out << asset_title(entry) << ": ";
    write_entry(out, asset_rows, entries_of, entry * entry_size);
    out << std::endl;
  }
}

std::optional<assets_block> parse_assets(std::span<const std::string_view> lines,
                                         parse_fault& fault) {
  if (!has_lines("assets", lines, assets_lines, fault)) return std::nullopt;
  assets_block block{};
  const auto length = framed(lines[0], length_start,
                             std::string(length_end) + std::to_string(assets_size));
  const char* const end = length ? length->data() + length->size() : nullptr;
  if (!length || std::from_chars(length->data(), end, block.length).ptr != end ||
      block.length == 0 || block.length > longest_reply) {
    fault = {0, "assets line 'Length' wants a reply length from 1 to " +
                    std::to_string(longest_reply)};
    return std::nullopt;
  }
  for (std::size_t entry = 0; entry < entries; ++entry) {
    const std::string title = asset_title(entry) + ": ";
    std::string_view line = lines[1 + entry];
    if (!line.starts_with(title)) {
      fault = {1 + entry, "assets wants the line '" + title + "...'"};
      return std::nullopt;
    }
    line.remove_prefix(title.size());
    std::string message;
    if (!parse_entry("assets", asset_rows, line, block.table, entry * entry_size, message)) {
      fault = {1 + entry, std::move(message)};
      return std::nullopt;
    }
  }
  // The printer shows zeros past the reply, so only zeros there print back.
  const auto delivered =
      static_cast<std::size_t>(std::min<std::uint64_t>(block.length, assets_size));
  const auto* kept = std::find_if(block.table.begin() + delivered, block.table.end(),
                                  [](std::uint8_t byte) { return byte != 0; });
  if (kept != block.table.end()) {
    const auto entry = static_cast<std::size_t>(kept - block.table.begin()) / entry_size;
    fault = {1 + entry,
             "assets line '" + asset_title(entry) + "' has values past the reply length"};
    return std::nullopt;
  }
  std::ostringstream printed;
  write_assets(printed, block.length, block.table);
  if (const auto at = first_difference(lines, printed.str())) {
    fault = {*at, "assets line '" + (*at == 0 ? std::string("Length") : asset_title(*at - 1)) +
                      "' does not print back the same"};
    return std::nullopt;
  }
  return block;
}

std::vector<named_field> assets_fields(std::span<const std::uint8_t> table) {
  std::vector<named_field> fields;
  const byte_reader entries_of(table);
  for (std::size_t entry = 0; entry < entries; ++entry) {
    fields.push_back({"speed", speed_of(entry), entry});
    fields.push_back({"state", state_of(entry), entry});
    add_fields(asset_rows, entries_of, entry * entry_size, entry, fields);
  }
  return fields;
}

}  // namespace layouts
