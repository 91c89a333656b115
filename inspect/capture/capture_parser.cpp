// The harvest grammar's cursor, its damage and its recovery, and the driver
// that runs the steps of each harvest.

#include <algorithm>

#include "inspect/capture/capture_parser.h"
#include "inspect/capture/failure_meaning.h"

namespace inspect {
namespace {

using layouts::harvest_request;
using layouts::request_row;

constexpr std::size_t row_count = std::size(layouts::harvest_requests);

}  // namespace

capture_parser::capture_parser(std::vector<capture_line> lines, std::vector<capture_record> records,
                               capture_model& model, damage_log& damage,
                               const year_preference& years, const zone_rules& zone,
                               bool cut_short)
    : lines_(std::move(lines)),
      records_(std::move(records)),
      model_(model),
      damage_(damage),
      years_(years),
      zone_(zone),
      cut_short_(cut_short) {
  // A failure line the collector cannot have written is damage wherever it
  // stands; the grammar never sees it.
  std::erase_if(lines_, [&](const capture_line& line) {
    if (line.kind != token_kind::failure) return false;
    failure_parse parsed;
    std::string why;
    if (parse_failure_line(line.text, parsed, why)) return false;
    add_damage({.kind = problem_kind::bad_failure_line, .line = line.number, .reason = why});
    return true;
  });
  model_.has_stderr = std::any_of(lines_.begin(), lines_.end(), [](const capture_line& line) {
    return line.kind == token_kind::failure;
  });
}

std::uint64_t capture_parser::number() const {
  if (at_ < lines_.size()) return lines_[at_].number;
  return lines_.empty() ? 1 : lines_.back().number + 1;
}

bool capture_parser::at_banner(request about) const {
  return !done() && lines_[at_].kind == token_kind::banner && lines_[at_].request == row_of(about);
}

void capture_parser::add_damage(problem found) {
  damage_.add(std::move(found));
}

bool capture_parser::parse_failure(std::size_t at, failure_parse& parsed) const {
  if (at >= lines_.size() || lines_[at].kind != token_kind::failure) return false;
  std::string why;
  return parse_failure_line(lines_[at].text, parsed, why);
}

// The failure line under the cursor, consumed. A line number in another base
// than the lines before set is not what one run prints: told, and read.
bool capture_parser::take_failure(failure_parse& parsed) {
  if (!parse_failure(at_, parsed)) return false;
  parsed.failure.line = number();
  // A later harvest is the same run's (hexadecimal goes on) or another's
  // (decimal again): its first line says which.
  if (base_open_) hex_numbers_ = parsed.hex_line_number;
  base_open_ = false;
  if (parsed.hex_line_number != hex_numbers_)
    add_damage({.kind = hex_numbers_ ? problem_kind::decimal_after_hex : problem_kind::hex_before_set,
                .line = parsed.failure.line});
  if (parsed.has_value) hex_numbers_ = true;
  ++at_;
  return true;
}

bool capture_parser::peek_failure(std::span<const layouts::failure_site> sites,
                                  failure_parse& parsed, std::size_t ahead) const {
  if (!parse_failure(at_ + ahead, parsed)) return false;
  return std::any_of(sites.begin(), sites.end(), [&](const layouts::failure_site& site) {
    return site.module == parsed.site->module && site.line == parsed.site->line;
  });
}

void capture_parser::keep(failure_line failure, request about) {
  failure.about = about;
  failure.meaning = failure_meaning(failure);
  harvest_->failures.push_back(std::move(failure));
}

void capture_parser::add_call(request about, call_outcome outcome, std::uint32_t value,
                              std::vector<std::uint8_t> reply, std::uint64_t line) {
  harvest_->calls.push_back({about, outcome, value, std::move(reply), line});
}

void capture_parser::take_access(request about, access_result& result) {
  result = {};
  failure_parse parsed;
  if (!peek_failure(layouts::one_shot_sites, parsed)) {
    // The access layer's line lost: the step's own line says the request
    // failed all the same.
    const layouts::failure_site& step = request_row(about).step_failure;
    if (step.line != 0 && peek_failure({&step, 1}, parsed)) {
      add_damage({.kind = problem_kind::access_line_missing, .line = number()});
      result = {call_outcome::refused, parsed.failure.value, number()};
    }
    return;
  }
  take_failure(parsed);
  switch (parsed.site->kind) {
    case failure_kind::service_missing: result.outcome = call_outcome::missing; break;
    case failure_kind::open_failed: result.outcome = call_outcome::open_failed; break;
    case failure_kind::zero_connection: result.outcome = call_outcome::zero_connection; break;
    default: result.outcome = call_outcome::refused; break;
  }
  result.value = parsed.failure.value;
  result.line = parsed.failure.line;
  keep(std::move(parsed.failure), about);
}

// The step's own line after a failed request, carrying its result. Missing,
// it is damage; the step has failed all the same.
bool capture_parser::take_step_failure(request about, const access_result& access) {
  const layouts::failure_site& site = request_row(about).step_failure;
  failure_parse parsed;
  if (!peek_failure({&site, 1}, parsed)) {
    const std::string expected = "the failure line of " + std::string(site.module) + " line " +
                                 std::to_string(site.line);
    if (done()) {
      cut_harvest(expected);
      return false;
    }
    add_damage({.kind = problem_kind::step_line_missing, .line = number(), .subject = expected});
    return true;
  }
  take_failure(parsed);
  if (parsed.failure.value != access.step_value())
    add_damage({.kind = problem_kind::failure_result_differs, .line = parsed.failure.line});
  keep(std::move(parsed.failure), about);
  return true;
}

std::vector<std::string_view> capture_parser::block(std::size_t count) const {
  std::vector<std::string_view> texts;
  for (std::size_t i = at_; i < std::min(lines_.size(), at_ + count); ++i) texts.push_back(lines_[i].text);
  return texts;
}

// A block whose lines do not read back: its text lines are passed over.
void capture_parser::skip_block(std::uint64_t first, const std::string& what, const std::string& why) {
  std::uint64_t last = first;
  while (!done() && lines_[at_].kind == token_kind::text) last = lines_[at_++].number;
  add_damage(
      {.kind = problem_kind::block_unreadable, .line = first, .last_line = last, .subject = what, .reason = why});
}

void capture_parser::cut_harvest(const std::string& expected) {
  const std::size_t index = static_cast<std::size_t>(harvest_ - model_.harvests.data()) + 1;
  harvest_->cut = "at line " + std::to_string(number()) + ", where " + expected + " belongs";
  add_damage({.kind = problem_kind::harvest_cut_short,
              .line = number(),
              .subject = expected,
              .numbers = {static_cast<std::int64_t>(index), 0}});
}

// Which request a line that the grammar knows belongs to. A one-shot
// request's access line is the next line's: its step line or what it
// printed.
std::optional<std::size_t> capture_parser::anchor_row(std::size_t at) const {
  const capture_line* line = line_at(at);
  if (line == nullptr) return std::nullopt;
  switch (line->kind) {
    case token_kind::banner: return line->request;
    case token_kind::record: return row_of(request::profile_events);
    case token_kind::text: return std::nullopt;
    case token_kind::failure: break;
  }
  failure_parse parsed;
  if (!parse_failure(at, parsed)) return std::nullopt;
  if (parsed.about) return row_of(*parsed.about);
  return anchor_row(at + 1);
}

// Whether the line at `at` starts what the request prints after its banner.
bool capture_parser::block_starts(std::size_t row, std::size_t at) const {
  const capture_line* line = line_at(at);
  if (line == nullptr) return false;
  const harvest_request& entry = layouts::harvest_requests[row];
  if (line->kind == token_kind::failure) return anchor_row(at) == row;
  switch (entry.step) {
    case layouts::harvest_step::stats: return line->text == "pkey_stats";
    case layouts::harvest_step::state_dumps: return line->text == state_heading(entry);
    case layouts::harvest_step::profile: return line->kind == token_kind::record;
    case layouts::harvest_step::assets: return line->text.starts_with("Length: ");
    case layouts::harvest_step::hid_reports:
      return line->kind == token_kind::text && line->text.starts_with("00000000: ");
  }
  return false;
}

bool capture_parser::recover(std::size_t here, const std::string& expected) {
  jump_.reset();
  if (done()) {
    cut_harvest(expected);
    return false;
  }
  // A line of text where a banner belongs, with what the banner heads after
  // it: the banner, spoiled.
  const harvest_request& entry = layouts::harvest_requests[here];
  if (lines_[at_].kind == token_kind::text && !entry.banner.empty() &&
      expected.starts_with("the banner") && block_starts(here, at_ + 1)) {
    add_damage({.kind = problem_kind::spoiled_banner, .line = number(), .subject = std::string(entry.banner)});
    lines_[at_].kind = token_kind::banner;
    lines_[at_].request = here;
    return true;
  }
  std::uint64_t first = 0, last = 0;
  while (!done() && lines_[at_].kind == token_kind::text) {
    if (first == 0) first = number();
    last = lines_[at_++].number;
  }
  if (first != 0)
    add_damage({.kind = problem_kind::unexpected_text, .line = first, .last_line = last, .subject = expected});
  if (done()) {
    cut_harvest(expected);
    return false;
  }
  const std::size_t row = anchor_row(at_).value_or(here);
  if (row == here) {
    if (first == 0) add_damage({.kind = problem_kind::part_missing, .line = number(), .subject = expected});
    return true;
  }
  if (row > here) {
    add_damage({.kind = problem_kind::parts_missing,
                .line = number(),
                .subject = expected,
                .object = std::string(layouts::harvest_requests[row].label)});
    jump_ = row;
    return false;
  }
  const std::size_t index = static_cast<std::size_t>(harvest_ - model_.harvests.data()) + 1;
  harvest_->cut = "at line " + std::to_string(number()) + ", where a new harvest starts";
  add_damage({.kind = problem_kind::harvest_ends_early,
              .line = number(),
              .subject = expected,
              .numbers = {static_cast<std::int64_t>(index), 0}});
  return false;
}

bool capture_parser::read_harvest() {
  std::size_t row = 0;
  while (row < row_count) {
    bool on = true;
    switch (layouts::harvest_requests[row].step) {
      case layouts::harvest_step::stats:
        on = read_stats();
        row = row_of(request::lyn_state);
        break;
      case layouts::harvest_step::state_dumps:
        on = read_states(row);
        row = row_of(request::profile_events);
        break;
      case layouts::harvest_step::profile:
        on = read_profile();
        row = row_of(request::assets);
        break;
      case layouts::harvest_step::assets:
        on = read_assets();
        row = row_of(request::hid_device);
        break;
      case layouts::harvest_step::hid_reports:
        on = read_hid(row);
        row = row_count;
        break;
    }
    if (jump_) {
      row = *jump_;
      jump_.reset();
      continue;
    }
    if (!on) return false;
  }
  return true;
}

void capture_parser::run() {
  while (!done()) {
    model_.harvests.emplace_back();
    harvest_ = &model_.harvests.back();
    harvest_->line = number();
    base_open_ = model_.harvests.size() > 1;
    const std::size_t start = at_;
    read_harvest();
    if (at_ != start) continue;
    // A line no harvest can start with, where one would: passed over, so
    // that the reading always goes on.
    model_.harvests.pop_back();
    add_damage({.kind = problem_kind::stray_line, .line = number()});
    ++at_;
  }
  if (model_.harvests.empty()) {
    model_.harvests.emplace_back();
    model_.harvests.back().line = 1;
  }
  check_profile_lines();
}

}  // namespace inspect
