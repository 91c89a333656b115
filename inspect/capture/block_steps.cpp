// The steps whose replies print as blocks of lines: the statistics, the
// state dumps, the asset table.

#include <algorithm>
#include <sstream>

#include "inspect/capture/capture_parser.h"
#include "quandor/layouts/record_layouts.h"

namespace inspect {
namespace {

using layouts::harvest_request;
using layouts::request_row;

std::string banner_words(request about) {
  return "the banner \"" + std::string(request_row(about).banner) + "\"";
}


std::string printed_state(const harvest_request& entry, std::span<const std::uint8_t> record) {
  std::ostringstream out;
  if (layouts::prints_power_state(entry.service))
    layouts::write_power_state(out, entry.service, record);
  else
    layouts::write_counts(out, entry.command, record);
  return out.str();
}
}  // namespace

std::string state_heading(const harvest_request& entry) {
  if (layouts::prints_power_state(entry.service)) return std::string(entry.service) + " State";
  for (const layouts::counts_heading& heading : layouts::counts_headings)
    if (heading.command == entry.command) return std::string(heading.text);
  return {};
}

// The statistics and the assets print their banner after the request
// succeeds: its access and step lines, or an empty stdout-only step (a
// refusal out of sight), or the banner. A value: the step is over, and
// whether the harvest goes on.
std::optional<bool> capture_parser::request_then_banner(request about, access_result& access) {
  take_access(about, access);
  if (access.failed()) {
    add_call(about, access.outcome, access.value, {}, access.line);
    return take_step_failure(about, access);
  }
  if (at_banner(about)) return std::nullopt;
  // The statistics' banner missing, the state dumps' first one follows.
  const bool next_step = about == request::stats ? at_banner(request::lyn_state) || done()
                                                 : true;
  if (access.outcome != call_outcome::zero_connection && !model_.has_stderr && at_known_line() &&
      next_step) {
    add_call(about, call_outcome::refused, unseen_refusal, {}, number());
    return true;
  }
  if (!recover(row_of(about), banner_words(about))) return false;
  if (!at_banner(about)) return true;
  return std::nullopt;
}

bool capture_parser::read_stats() {
  constexpr request about = request::stats;
  access_result access;
  if (const std::optional<bool> ended = request_then_banner(about, access)) return *ended;
  stats_block stats;
  stats.line = number();
  ++at_;
  if (peek() == "pkey_stats") {
    layouts::parse_fault why;
    const std::vector<std::string_view> texts = block(layouts::stats_lines);
    const auto record = layouts::parse_stats(texts, why);
    if (record) {
      stats.record = *record;
      at_ += texts.size();
      stats.printed = true;
    } else {
      stats.damaged = true;
      skip_block(number(), "the statistics block", why.message + " (its line " +
                                                        std::to_string(number() + why.line) + ")");
    }
  }
  if (access.outcome == call_outcome::zero_connection) {
    // The step's own buffer starts zeroed and is printed whole.
    if (!stats.printed || std::any_of(stats.record.begin(), stats.record.end(),
                                      [](std::uint8_t b) { return b != 0; }))
      add_damage({.kind = problem_kind::zeroed_statistics, .line = stats.line});
    add_call(about, call_outcome::zero_connection, 0, {}, access.line);
  } else {
    std::vector<std::uint8_t> reply;
    if (stats.printed) reply.assign(stats.record.begin(), stats.record.end());
    add_call(about, call_outcome::reply, 0, std::move(reply), stats.line);
  }
  harvest_->stats = stats;
  return true;
}

bool capture_parser::parse_state(const harvest_request& entry, std::vector<std::uint8_t>& record,
                                 std::string& why) {
  layouts::parse_fault fault;
  const bool counts = !layouts::prints_power_state(entry.service);
  const std::vector<std::string_view> texts =
      block(counts ? layouts::counts_lines : layouts::power_state_lines);
  if (counts) {
    const auto parsed = layouts::parse_counts(texts, fault);
    if (parsed) record.assign(parsed->record.begin(), parsed->record.end());
  } else {
    const auto parsed = layouts::parse_power_state(texts, fault);
    if (parsed) record.assign(parsed->record.begin(), parsed->record.end());
  }
  if (record.empty()) {
    why = fault.message + " (its line " + std::to_string(number() + fault.line) + ")";
    return false;
  }
  at_ += texts.size();
  return true;
}

bool capture_parser::read_states(std::size_t first_row) {
  const auto requests = layouts::step_requests(layouts::harvest_step::state_dumps);
  // The shared buffer as the replies chosen here leave it, and the length
  // each request is offered. A step taken up in the middle knows neither.
  std::array<std::uint8_t, 12> buffer{};
  std::size_t length = requests.front().capacity;
  const bool whole = first_row == row_of(requests.front().id);
  for (const harvest_request& entry : requests) {
    const request about = entry.id;
    if (row_of(about) < first_row) continue;
    if (!at_banner(about)) {
      if (!recover(row_of(about), banner_words(about))) return false;
      if (!at_banner(about)) continue;
    }
    state_dump dump{about, number(), std::nullopt};
    ++at_;
    access_result access;
    take_access(about, access);
    if (access.failed()) {
      add_call(about, access.outcome, access.value, {}, access.line);
      harvest_->states.push_back(dump);
      return take_step_failure(about, access);
    }
    if (peek() == state_heading(entry)) {
      std::vector<std::uint8_t> record;
      std::string why;
      if (parse_state(entry, record, why)) {
        dump.record = std::move(record);
      } else {
        dump.damaged = true;
        skip_block(number(), "the " + std::string(entry.label) + " block", why);
      }
    }
    if (access.outcome == call_outcome::zero_connection) {
      const bool prints = length != 0;
      if (whole && !dump.damaged &&
          (prints != dump.record.has_value() ||
           (prints && printed_state(entry, *dump.record) != printed_state(entry, buffer))))
        add_damage({.kind = problem_kind::stale_state_dump, .line = dump.line});
      add_call(about, call_outcome::zero_connection, 0, {}, access.line);
    } else if (dump.record) {
      if (whole && length < dump.record->size())
        add_damage({.kind = problem_kind::state_dump_after_empty, .line = dump.line});
      std::copy(dump.record->begin(), dump.record->end(), buffer.begin());
      length = dump.record->size();
      add_call(about, call_outcome::reply, 0, *dump.record, dump.line);
    } else {
      const bool last = about == requests.back().id;
      if (!last && !dump.damaged && !at_banner(static_cast<request>(row_of(about) + 1)) &&
          !model_.has_stderr && at_known_line()) {
        // Standard output alone: the request failed out of sight.
        add_call(about, call_outcome::refused, unseen_refusal, {}, dump.line);
        harvest_->states.push_back(dump);
        return true;
      }
      length = 0;
      add_call(about, call_outcome::reply, 0, {}, dump.line);
    }
    harvest_->states.push_back(std::move(dump));
  }
  return true;
}

bool capture_parser::read_assets() {
  constexpr request about = request::assets;
  const harvest_request& entry = request_row(about);
  access_result access;
  if (const std::optional<bool> ended = request_then_banner(about, access)) return *ended;
  assets_block assets;
  assets.line = number();
  ++at_;
  if (peek().starts_with("Length: ")) {
    layouts::parse_fault why;
    const std::vector<std::string_view> texts = block(layouts::assets_lines);
    const auto parsed = layouts::parse_assets(texts, why);
    if (parsed && parsed->length <= entry.capacity) {
      assets.length = parsed->length;
      assets.table = parsed->table;
      at_ += texts.size();
    } else {
      assets.damaged = true;
      skip_block(number(), "the asset table",
                 parsed ? "longer than the " + std::to_string(entry.capacity) + " bytes offered"
                        : why.message + " (its line " + std::to_string(number() + why.line) + ")");
    }
  }
  if (access.outcome == call_outcome::zero_connection) {
    if (assets.length != entry.capacity ||
        std::any_of(assets.table.begin(), assets.table.end(), [](std::uint8_t b) { return b != 0; }))
      add_damage({.kind = problem_kind::zeroed_assets, .line = assets.line});
    add_call(about, call_outcome::zero_connection, 0, {}, access.line);
  } else {
    std::vector<std::uint8_t> reply(assets.length, 0);
    std::copy_n(assets.table.begin(), std::min<std::size_t>(assets.length, assets.table.size()),
                reply.begin());
    add_call(about, call_outcome::reply, 0, std::move(reply), assets.line);
  }
  harvest_->assets = assets;
  return true;
}

// Every profile line must be what its bytes print: a line that is not was
// edited (its bytes are read all the same), and the collector prints no line

}  // namespace inspect
