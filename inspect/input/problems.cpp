#include "inspect/input/problems.h"

namespace inspect {
namespace {

using enum problem_kind;
constexpr severity note = severity::note;
constexpr severity lost = severity::lost;
constexpr severity missing = severity::missing;
constexpr severity disagreement = severity::disagreement;

constexpr problem_row rows[] = {
    {text_before_harvest, "text_before_harvest", note, "text before the first line of a harvest", "passed over"},
    {input_cut_short, "input_cut_short", lost, "the input is cut short", "the rest is lost"},
    {line_too_long, "line_too_long", lost, "line longer than 65536 bytes", "skipped"},
    {unreadable_line, "unreadable_line", lost, "", "line skipped"},
    {line_cut_short, "line_cut_short", lost, "the input ends inside the line", "left out"},
    {raw_tail, "raw_tail", lost, "{n} trailing bytes, not a whole 48-byte record", "left out", 1},
    {bad_failure_line, "bad_failure_line", lost, "", "line skipped"},
    {decimal_after_hex, "decimal_after_hex", lost,
     "line number in decimal after a failure line set hexadecimal", "read as it stands"},
    {hex_before_set, "hex_before_set", lost, "line number in hexadecimal before any failure line set it",
     "read as it stands"},
    {access_line_missing, "access_line_missing", lost, "the access layer's line before this one is missing",
     "read as a refusal"},
    {step_line_missing, "step_line_missing", lost, "{s} is missing", "the request is taken as failed"},
    {failure_result_differs, "failure_result_differs", lost,
     "the step's failure carries another result than the request's", "read as it stands"},
    {block_unreadable, "block_unreadable", lost, "{s} cannot be read", "passed over"},
    {harvest_cut_short, "harvest_cut_short", lost, "the capture ends inside harvest {n}, where {s} belongs",
     "the rest of the harvest is missing", 1},
    {spoiled_banner, "spoiled_banner", lost, "not the banner \"{s}\"", "taken for it (spoiled)"},
    {unexpected_text, "unexpected_text", lost, "{s} expected here", "passed over"},
    {part_missing, "part_missing", lost, "{s} is missing", "read on"},
    {parts_missing, "parts_missing", lost, "{s} is missing, and what follows it up to \"{o}\"",
     "read on from there"},
    {harvest_ends_early, "harvest_ends_early", lost,
     "harvest {n} ends where {s} belongs: a new harvest starts here", "the rest of the harvest is missing", 1},
    {stray_line, "stray_line", lost, "a line no harvest starts with", "passed over"},
    {profile_text_differs, "profile_text_differs", lost, "profile line is not what its binary-data prints",
     "read from its binary-data"},
    {record_text_not_utf8, "record_text_not_utf8", lost,
     "the collector prints no line for a record whose text is not UTF-8", "read from its binary-data"},
    {zeroed_profile_records, "zeroed_profile_records", lost,
     "a zero connection to the profile service prints 1365 zeroed records", "read as printed"},
    {extra_profile_lines, "extra_profile_lines", lost, "more profile lines than the two readers print",
     "read, though no phone prints them"},
    {zeroed_statistics, "zeroed_statistics", lost, "statistics after a zero connection print the zeroed buffer",
     "read as printed"},
    {stale_state_dump, "stale_state_dump", lost,
     "a zero connection prints the shared buffer as the previous reply left it", "read as printed"},
    {state_dump_after_empty, "state_dump_after_empty", lost,
     "printed after an empty reply that left the shared buffer no room", "read as printed"},
    {zeroed_assets, "zeroed_assets", lost, "assets after a zero connection print the zeroed 4096-byte buffer",
     "read as printed"},
    {calendar_follows_pair_before, "calendar_follows_pair_before", note, "no clock pair for this calendar time",
     "its calendar time follows the pair before it"},
    {harvest_incomplete, "harvest_incomplete", missing, "the capture ends inside this harvest: {s}", ""},
    {statistics_damaged, "statistics_damaged", missing,
     "no statistics record (its block at line {n} is damaged): the press cannot be shown", "", 1},
    {no_statistics, "no_statistics", missing, "no statistics record: the press cannot be shown", ""},
    {statistics_failed, "statistics_failed", missing,
     "no statistics record (failure line {n}): the press cannot be shown", "", 1},
    {no_profile_step, "no_profile_step", missing, "no profile step in the capture", ""},
    {no_profile_records, "no_profile_records", missing,
     "no profile records: no tracks, and nothing to check the press against", ""},
    {profile_failed, "profile_failed", missing,
     "no profile records (failure line {n}): no tracks, and nothing to check the press against", "", 1},
    {no_calendar_time, "no_calendar_time", missing,
     "no calendar time: the profile lines carry none and no --timesync was given", ""},
    {other_clock_pair, "other_clock_pair", missing,
     "the calendar times of {s} follow another clock pair (renewed, or edited) than the rest: times are "
     "shown with the pair of the most",
     ""},
    {calendar_not_local, "calendar_not_local", missing,
     "{n} calendar time{p} from line {m} name no local time in this time zone (give the phone's)", "", 2},
    {clicks_beyond_record, "clicks_beyond_record", note,
     "the click count is {n}, but the record holds times for {m} clicks", "", 2},
    {no_click, "no_click", note, "the statistics record counts no click", ""},
    {no_button_down, "no_button_down", note, "click {n}: the record has no button-down time", "", 1},
    {no_button_up, "no_button_up", note, "click {n}: the record has no button-up time", "", 1},
    {no_down_asset, "no_down_asset", note, "click {n}: the record has no time for the button-down asset", "",
     1},
    {no_up_asset, "no_up_asset", note, "click {n}: the record has no time for the button-up asset", "", 1},
    {nothing_to_check, "nothing_to_check", note, "no profile records: nothing to check the statistics against",
     ""},
    {no_checkpoints, "no_checkpoints", note,
     "no checkpoint records (pkey latency): the statistics are not checked", ""},
    {checkpoint_not_found, "checkpoint_not_found", note, "{s}: no {o} record within {n} ms", "", 1},
    {checkpoint_offset, "checkpoint_offset", disagreement,
     "{s}: {o} is {u} from the statistics record's time (more than {m} µs)", "", 2},
    {step_backwards, "step_backwards", disagreement, "{s}: {o} ({n} µs) comes before the step's start ({m} µs)",
     "", 2},
    {latency_field_differs, "latency_field_differs", disagreement,
     "{s}: the record's latency is {n} µs, its timestamps are {m} µs apart", "", 2},
    {unmatched_edge, "unmatched_edge", disagreement,
     "{s} at {n} µs (line {m}) matches no click of the statistics record", "", 2},
};

// The table is the enum in order: a kind is its own index.
constexpr bool in_enum_order() {
  for (std::size_t i = 0; i < std::size(rows); ++i)
    if (static_cast<std::size_t>(rows[i].kind) != i) return false;
  return true;
}
static_assert(in_enum_order());
static_assert(std::size(rows) == static_cast<std::size_t>(unmatched_edge) + 1);

// Appended piece by piece: GCC's -O3 takes a literal joined to a
// temporary string for an overlapping copy.
void append_signed_micros(std::string& text, std::int64_t value) {
  if (value > 0) text += '+';
  text += std::to_string(value);
  text += " µs";
}

}  // namespace

const std::span<const problem_row> problem_rows(rows);

const problem_row& row_of(problem_kind kind) noexcept { return rows[static_cast<std::size_t>(kind)]; }

std::string_view kind_code(problem_kind kind) noexcept { return row_of(kind).code; }

std::string_view severity_code(severity level) noexcept {
  switch (level) {
    case severity::note: return "note";
    case severity::lost: return "lost";
    case severity::missing: return "missing";
    case severity::disagreement: return "disagreement";
  }
  return {};
}

bool loses_input(const problem& found) noexcept { return row_of(found.kind).level == severity::lost; }

std::string problem::where() const {
  if (byte) return "byte " + std::to_string(*byte);
  if (line == 0) return {};
  if (last_line > line) return "lines " + std::to_string(line) + "-" + std::to_string(last_line);
  return "line " + std::to_string(line);
}

std::string problem_text(const problem& found) {
  const std::string_view pattern = row_of(found.kind).text;
  std::string text;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '{' || i + 2 >= pattern.size() || pattern[i + 2] != '}') {
      text += pattern[i];
      continue;
    }
    switch (pattern[i + 1]) {
      case 's': text += found.subject; break;
      case 'o': text += found.object; break;
      case 'n': text += std::to_string(found.numbers[0]); break;
      case 'm': text += std::to_string(found.numbers[1]); break;
      case 'u': append_signed_micros(text, found.numbers[0]); break;
      case 'p': text += found.numbers[0] == 1 ? "" : "s"; break;
      default: text.append(pattern.substr(i, 3));
    }
    i += 2;
  }
  if (!found.reason.empty()) {
    if (!text.empty()) text += ": ";
    text += found.reason;
  }
  return text;
}

std::string_view problem_outcome(const problem& found) noexcept { return row_of(found.kind).outcome; }

}  // namespace inspect
