#include "inspect/input/line_tokens.h"

#include "quandor/layouts/harvest_requests.h"

namespace inspect {
namespace {

// A record's text may hold a line end in each of its 32 payload bytes.
constexpr std::size_t longest_record_run = 33;

std::optional<std::size_t> banner_row(std::string_view line) {
  if (!line.starts_with("====")) return std::nullopt;
  for (std::size_t row = 0; row < std::size(layouts::harvest_requests); ++row)
    if (line == layouts::harvest_requests[row].banner) return row;
  return std::nullopt;
}

bool harvest_failure(std::string_view line) {
  return line.starts_with(failure_start) &&
         (line.substr(failure_start.size()).starts_with("kelvra: ") ||
          line.substr(failure_start.size()).starts_with("varnel: "));
}

}  // namespace

token_reader::token_reader(input_form form, std::unique_ptr<chunk_buffer> input,
                           damage_log& damage, bool records_only)
    : form_(form_of(form)),
      input_(std::move(input)),
      lines_(*input_),
      damage_(damage),
      records_only_(records_only) {}

bool token_reader::next_line(text_line& line) {
  if (held_.empty()) return lines_.next(line);
  held_line& held = held_.front();
  current_ = std::move(held.text);
  line = {current_, held.number, held.crlf, held.ended, held.too_long};
  held_.pop_front();
  return true;
}

// A record whose text holds a line end runs on over the next lines: they
// are read ahead, joined with their line ends, until the whole parses.
bool token_reader::join_record(const text_line& first, line_token& token) {
  joined_.assign(first.text);
  std::string_view line_end = first.crlf ? "\r\n" : "\n";
  if (!first.ended) return false;
  for (std::size_t more = 1; more < longest_record_run; ++more) {
    if (held_.size() < more) {
      text_line next;
      if (!lines_.next(next)) return false;
      held_.push_back({std::string(next.text), next.number, next.crlf, next.ended, next.too_long});
    }
    const held_line& next = held_[more - 1];
    // A record line or a banner is the next line, not the record's text.
    if (next.too_long || next.text.starts_with(profile_line_start) || banner_row(next.text))
      return false;
    joined_ += line_end;
    joined_ += next.text;
    std::string why;
    if (parse_profile_line(joined_, token.record, why)) {
      token.record.last_line = next.number;
      token.ended = next.ended;
      held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(more));
      token.text = joined_;
      return true;
    }
    if (!next.ended) break;
    line_end = next.crlf ? "\r\n" : "\n";
  }
  return false;
}

void token_reader::note_header(std::uint64_t first_harvest_line) {
  started_ = true;
  if (first_harvest_line > 1)
    damage_.add({.kind = problem_kind::text_before_harvest, .line = 1, .last_line = first_harvest_line - 1});
}

void token_reader::end_of_input() {
  ended_ = true;
  cut_short_ = cut_short_ || input_->read_fault().has_value();
  if (const auto& fault = input_->read_fault())
    damage_.add({.kind = problem_kind::input_cut_short, .byte = input_->position(), .reason = *fault});
}

bool token_reader::next(line_token& token) {
  const bool harvest = form_.form == input_form::harvest;
  text_line line;
  while (!ended_) {
    if (!next_line(line)) {
      end_of_input();
      return false;
    }
    const bool record_line = line.text.starts_with(form_.line_start);
    if (line.too_long) {
      if (record_line && harvest && !started_) note_header(line.number);
      if (record_line || (harvest && started_))
        damage_.add({.kind = problem_kind::line_too_long, .line = line.number});
      continue;
    }
    cut_short_ = !line.ended;
    token = {};
    token.line = line.number;
    token.ended = line.ended;
    token.text = line.text;
    if (record_line) {
      if (harvest && !started_) note_header(line.number);
      started_ = true;
      token.kind = token_kind::record;
      token.record.line = token.record.last_line = line.number;
      if (form_.parse(line.text, token.record, fault_)) return true;
      if (harvest && join_record(line, token)) return true;
      damage_.add({.kind = line.ended ? problem_kind::unreadable_line : problem_kind::line_cut_short,
                   .line = line.number,
                   .reason = fault_});
      continue;
    }
    if (!harvest) continue;
    const std::optional<std::size_t> row = banner_row(line.text);
    const bool failure = !row && harvest_failure(line.text);
    if (!started_) {
      if (!row && !failure) continue;
      note_header(line.number);
    }
    if (!line.ended && !row) {
      damage_.add({.kind = problem_kind::line_cut_short, .line = line.number});
      continue;
    }
    if (records_only_) continue;
    if (row) {
      token.kind = token_kind::banner;
      token.request = *row;
    } else {
      token.kind = failure ? token_kind::failure : token_kind::text;
    }
    return true;
  }
  return false;
}

}  // namespace inspect
