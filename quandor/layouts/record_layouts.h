#pragma once

// The device records kelvra prints, each laid out once. The collector prints
// them to standard output; the desk tool prints them to compare, parses the
// printed lines back into record bytes and names the fields for its reports.
//
// write_*: prints the record as the collector does, every line ended with
// std::endl. A field past the end of `record` reads as zero.
//
// parse_*: `lines` are the lines one write_* printed, without newlines. The
// result holds every printed field at its offset, little-endian, and zeros
// elsewhere; a derived value is turned back into its field. The rebuilt
// record must print exactly `lines`; anything else is a parse_fault.
//
// *_fields: the record's values in print order, snake_case named, for reports.

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace layouts {

// `line` is the index of the offending line within the block.
struct parse_fault {
  std::size_t line = 0;
  std::string message;
};

// Counts and times are unsigned, signed fields int64, scaled ones double;
// names are the words of the asset table.
using field_value = std::variant<std::uint64_t, std::int64_t, double, std::string_view>;

// What a field of the statistics record stands for in a press, declared
// with its row: code that reads the press finds fields by role, not name.
enum class field_role : std::uint8_t {
  none,
  click_count,
  finger_on,
  finger_off,
  start_haptics,
  finger_to_down_latency,
  button_edge,    // index 2k: click k's down, 2k + 1: its up
  asset_edge,     // the asset played for that edge
  asset_latency,  // from the edge to its asset
  second_scan_delta,
  gorvin_scans,
  lumet_scans,
};

// `index` is the element of an array field (a click edge) or the entry of a
// table or list.
struct named_field {
  std::string_view name;
  field_value value;
  std::optional<std::size_t> index;
  field_role role = field_role::none;
};

// The names of the asset table's codes, in code order.
inline constexpr std::string_view click_speeds[] = {"Slow", "Medium", "Fast"};
inline constexpr std::string_view button_states[] = {
    "SingleDown",  "SingleUp",     "DoubleDown",  "DoubleUp",
    "TripleDown",  "TripleUp",     "SingleTapOn", "SingleTapOff",
    "DoubleTapOn", "DoubleTapOff", "TripleTapOn", "TripleTapOff",
    "DeepDown",    "DeepUp",       "LongPress",   "LongPressUp",
};

// Button statistics (command 215): 34 lines, the last three empty.
// Click Count is click_flags >> 1; the second-scan delta wraps.
inline constexpr std::size_t stats_size = 282;
inline constexpr std::size_t stats_lines = 34;
void write_stats(std::ostream& out, std::span<const std::uint8_t> record);
std::optional<std::array<std::uint8_t, stats_size>> parse_stats(
    std::span<const std::string_view> lines, parse_fault& fault);
std::vector<named_field> stats_fields(std::span<const std::uint8_t> record);

// Power state of the speaker services (0xd0): "<service> State", 3 counters.
inline constexpr std::string_view power_state_services[] = {"lyn", "btmspk"};
inline constexpr std::size_t power_state_size = 12;
inline constexpr std::size_t power_state_lines = 4;
struct power_state_block {
  std::string_view service;  // one of power_state_services
  std::array<std::uint8_t, power_state_size> record;
};
void write_power_state(std::ostream& out, std::string_view service,
                       std::span<const std::uint8_t> record);
std::optional<power_state_block> parse_power_state(std::span<const std::string_view> lines,
                                                   parse_fault& fault);
std::vector<named_field> power_state_fields(std::span<const std::uint8_t> record);

// Enable and reference counts of the button (0xd0, 0xd1): heading, 3 lines.
struct counts_heading {
  std::uint32_t command;
  std::string_view text;
};
// Any command but the first prints the last heading.
inline constexpr counts_heading counts_headings[] = {
    {0xd0, "PKEY MCLK Counts"},
    {0xd1, "PKEY PellamEN Counts"},
};
inline constexpr std::size_t counts_size = 9;
inline constexpr std::size_t counts_lines = 4;
struct counts_block {
  std::uint32_t command;
  std::array<std::uint8_t, counts_size> record;
};
void write_counts(std::ostream& out, std::uint32_t command, std::span<const std::uint8_t> record);
std::optional<counts_block> parse_counts(std::span<const std::string_view> lines,
                                         parse_fault& fault);
std::vector<named_field> counts_fields(std::span<const std::uint8_t> record);

// A state dump's layout is its service's: a speaker's power state, else the
// button's counts.
bool prints_power_state(std::string_view service) noexcept;
std::vector<named_field> state_dump_fields(std::string_view service, std::span<const std::uint8_t> record);

// Scan state of "varsium": 11 lines, two of them empty.
inline constexpr std::size_t scan_state_size = 40;
inline constexpr std::size_t scan_state_lines = 11;
void write_scan_state(std::ostream& out, std::span<const std::uint8_t> record);
std::optional<std::array<std::uint8_t, scan_state_size>> parse_scan_state(
    std::span<const std::string_view> lines, parse_fault& fault);
std::vector<named_field> scan_state_fields(std::span<const std::uint8_t> record);

// Input-report error statistics (0xe3): heading naming the service, 15
// counters in two groups, each group followed by an empty line.
inline constexpr std::size_t input_report_errors_size = 60;
inline constexpr std::size_t input_report_errors_lines = 18;
struct input_report_errors_block {
  std::string service;
  std::array<std::uint8_t, input_report_errors_size> record;
};
void write_input_report_errors(std::ostream& out, std::string_view service,
                               std::span<const std::uint8_t> record);
std::optional<input_report_errors_block> parse_input_report_errors(
    std::span<const std::string_view> lines, parse_fault& fault);
std::vector<named_field> input_report_errors_fields(std::span<const std::uint8_t> record);

// Sample list of "mux" (0xd0): one line a whole 12-byte entry of `reply`.
inline constexpr std::size_t sample_size = 12;
void write_samples(std::ostream& out, std::span<const std::uint8_t> reply);
// One entry a line; no lines give no bytes.
std::optional<std::vector<std::uint8_t>> parse_samples(std::span<const std::string_view> lines,
                                                       parse_fault& fault);
std::vector<named_field> samples_fields(std::span<const std::uint8_t> reply);

// Haptic asset table (command 216): "Length: N, expected 1200", then one line
// an entry, speed by speed. Only the first N bytes of `reply` are the table;
// the rest of it prints as zeros.
inline constexpr std::size_t assets_size = 1200;
inline constexpr std::size_t assets_lines = 49;
inline constexpr std::uint64_t longest_reply = 4096;  // the collector's buffer
struct assets_block {
  std::uint64_t length;  // 1 to longest_reply
  std::array<std::uint8_t, assets_size> table;
};
void write_assets(std::ostream& out, std::uint64_t length, std::span<const std::uint8_t> reply);
// Refuses entries that are not zero past the reply length.
std::optional<assets_block> parse_assets(std::span<const std::string_view> lines,
                                         parse_fault& fault);
// Per entry: speed, state, enable, slot, gain, gain_raw, min, max.
std::vector<named_field> assets_fields(std::span<const std::uint8_t> table);

}  // namespace layouts
