#pragma once

// Everything wrong with or worth saying about a capture, as typed rows: the
// damage met while reading it, the parts a harvest lacks, the notes on its
// press and where the press disagrees with itself. A row holds a kind from
// one closed list, its place and its numbers; the sentences people read are
// rendered from it, so a fleet can count rows by kind.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace inspect {

enum class problem_kind : std::uint8_t {
  // Damage met while the input was read.
  text_before_harvest,
  input_cut_short,
  line_too_long,
  unreadable_line,
  line_cut_short,
  raw_tail,
  bad_failure_line,
  decimal_after_hex,
  hex_before_set,
  access_line_missing,
  step_line_missing,
  failure_result_differs,
  block_unreadable,
  harvest_cut_short,
  spoiled_banner,
  unexpected_text,
  part_missing,
  parts_missing,
  harvest_ends_early,
  stray_line,
  profile_text_differs,
  record_text_not_utf8,
  zeroed_profile_records,
  extra_profile_lines,
  zeroed_statistics,
  stale_state_dump,
  state_dump_after_empty,
  zeroed_assets,
  calendar_follows_pair_before,
  // What a harvest lacks.
  harvest_incomplete,
  statistics_damaged,
  no_statistics,
  statistics_failed,
  no_profile_step,
  no_profile_records,
  profile_failed,
  no_calendar_time,
  other_clock_pair,
  calendar_not_local,
  // Notes on the press.
  clicks_beyond_record,
  no_click,
  no_button_down,
  no_button_up,
  no_down_asset,
  no_up_asset,
  nothing_to_check,
  no_checkpoints,
  checkpoint_not_found,
  // Where the press disagrees with itself.
  checkpoint_offset,
  step_backwards,
  latency_field_differs,
  unmatched_edge,
};

// note: nothing of the input is lost; lost: part of the input could not be
// read; missing: a part of the harvest is absent; disagreement: two times of
// the press do not agree.
enum class severity : std::uint8_t { note, lost, missing, disagreement };

struct problem {
  problem_kind kind = problem_kind::stray_line;
  std::uint64_t line = 0;       // from 1; 0 when a byte offset or nothing places it
  std::uint64_t last_line = 0;  // of a run of lines; 0 or `line` for one line
  std::optional<std::uint64_t> byte{};
  std::optional<std::size_t> harvest{};  // from 0
  std::string subject{};  // what the sentence names: a part, a point of the press
  std::string object{};   // a second name: a checkpoint, a request's label
  std::string reason{};   // why, when a reader said so
  std::array<std::int64_t, 2> numbers{};

  // "line 12", "lines 3-7", "byte 480", or empty.
  std::string where() const;
};

struct problem_row {
  problem_kind kind;
  std::string_view code;  // lower_case words, as the schemas list them
  severity level;
  // With {s} for the subject, {o} the object, {n} and {m} the numbers, {u}
  // the first number as a signed microsecond offset, {p} "s" where the first
  // number is not 1; the reason follows after ": " when there is one, and
  // stands alone where the reader's own words are all there is to say.
  std::string_view text;
  std::string_view outcome;  // what was done about it; empty when nothing
  unsigned numbers = 0;      // how many of the numbers the kind carries
};

extern const std::span<const problem_row> problem_rows;

const problem_row& row_of(problem_kind kind) noexcept;
std::string_view kind_code(problem_kind kind) noexcept;
std::string_view severity_code(severity level) noexcept;
// Lost a part of the input: the rows that make an exit status 1.
bool loses_input(const problem& found) noexcept;

// The sentence of a row, without its outcome.
std::string problem_text(const problem& found);
std::string_view problem_outcome(const problem& found) noexcept;

}  // namespace inspect
