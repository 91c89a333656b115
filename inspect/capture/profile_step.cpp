// The profile step: the banner, the profile service's passes and the
// profiler log's, and where one reader's records give way to the other's.

#include <algorithm>
#include <cstring>

#include "inspect/capture/capture_parser.h"
#include "liblog_zol/ZOLProfile.h"

namespace inspect {
namespace {

constexpr const layouts::harvest_request& events = layouts::request_row(request::profile_events);
constexpr const layouts::harvest_request& profiler = layouts::request_row(request::profiler_log);
constexpr std::size_t events_per_pass = events.capacity / profile_record_size;      // 1365
constexpr std::size_t profiler_per_pass = profiler.capacity / profile_record_size;  // 1000

}  // namespace

bool capture_parser::take_records(std::size_t most, std::vector<std::uint8_t>& reply) {
  std::size_t count = 0;
  while (count < most && at_record()) {
    const capture_record& record = records_[lines_[at_].record];
    profile_entry entry;
    entry.line = record.line;
    entry.last_line = record.last_line;
    entry.bytes = record.bytes;
    entry.has_calendar_text = record.calendar_text.has_value();
    reply.insert(reply.end(), entry.bytes.begin(), entry.bytes.end());
    harvest_->profile.push_back(std::move(entry));
    kept_records_.push_back(&record);
    ++at_;
    ++count;
  }
  return true;
}

// Whether the access line under the cursor is the events reader's own: a
// failed request is followed by the reader's line, a zero connection by the
// records of the buffer. Otherwise it is the assets step's.
bool capture_parser::events_failure_ahead() const {
  failure_parse parsed;
  if (!peek_failure(layouts::one_shot_sites, parsed)) return false;
  if (parsed.site->kind == failure_kind::zero_connection) {
    const capture_line* next = line_at(at_ + 1);
    return next != nullptr && next->kind == token_kind::record;
  }
  failure_parse step;
  return peek_failure({&layouts::events_failed, 1}, step, 1);
}

bool capture_parser::read_profile() {
  constexpr request about = request::profile_events;
  if (at_banner(about)) {
    ++at_;
  } else if (!recover(static_cast<std::size_t>(about), "the profile banner")) {
    return false;
  }
  harvest_->profile_banner = true;
  bool events_done = false;
  const std::size_t first_call = harvest_->calls.size();
  for (unsigned pass = 0; pass < events.passes && !events_done; ++pass) {
    access_result access;
    if (events_failure_ahead()) take_access(about, access);
    if (access.failed()) {
      add_call(about, access.outcome, access.value, {}, access.line);
      if (!take_step_failure(about, access)) return false;
      harvest_->events_end = harvest_->profile.size();
      break;
    }
    std::vector<std::uint8_t> reply;
    const std::uint64_t line = number();
    if (access.outcome == call_outcome::zero_connection) {
      // The whole 64 KiB buffer, never written, is printed.
      take_records(events_per_pass, reply);
      if (reply.size() != events_per_pass * profile_record_size ||
          std::any_of(reply.begin(), reply.end(), [](std::uint8_t b) { return b != 0; }))
        add_damage({.kind = problem_kind::zeroed_profile_records, .line = line});
      add_call(about, call_outcome::zero_connection, 0, {}, access.line);
      continue;
    }
    take_records(events_per_pass, reply);
    events_done = reply.empty();
    add_call(about, call_outcome::reply, 0, std::move(reply), line);
  }
  // Ten full passes end the events reader where the capture cannot show it.
  if (!harvest_->events_end && !events_done) harvest_->events_end = harvest_->profile.size();
  read_profiler();
  split_by_sequence(first_call);
  return true;
}

// Each log numbers its own records, so the widest jump between records that
// follow each other is where the profile service's log most likely gives way
// to the profiler's. Only for two readers that both answered every pass,
// and only where both can then print their share.
void capture_parser::split_by_sequence(std::size_t first_call) {
  std::vector<device_call>& calls = harvest_->calls;
  const auto from = calls.begin() + static_cast<std::ptrdiff_t>(first_call);
  const auto profiler_call = std::find_if(from, calls.end(), [](const device_call& c) {
    return c.about == request::profiler_log;
  });
  if (from == profiler_call || profiler_call == calls.end()) return;
  const auto ended = [](auto begin, auto end) {
    return std::distance(begin, end) == events.passes || std::prev(end)->reply.empty();
  };
  if (!std::all_of(from, calls.end(),
                   [](const device_call& c) { return c.outcome == call_outcome::reply; }) ||
      !ended(from, profiler_call) || !ended(profiler_call, calls.end()))
    return;
  std::size_t count = 0, in_events = 0;
  for (auto call = from; call != calls.end(); ++call) {
    count += call->reply.size() / profile_record_size;
    if (call < profiler_call) in_events = count;
  }
  const std::span<const profile_entry> records(
      harvest_->profile.data() + harvest_->profile.size() - count, count);
  std::optional<std::size_t> best;
  std::uint32_t widest = 0;
  for (std::size_t i = 1; i < count; ++i) {
    std::uint32_t previous = 0, sequence = 0;
    std::memcpy(&previous, records[i - 1].bytes.data() + 4, sizeof previous);
    std::memcpy(&sequence, records[i].bytes.data() + 4, sizeof sequence);
    const std::uint32_t ahead = sequence - (previous + 1), behind = (previous + 1) - sequence;
    const std::uint32_t width = std::min(ahead, behind);
    if (width > widest && i <= events.passes * events_per_pass &&
        count - i <= profiler.passes * profiler_per_pass) {
      widest = width;
      best = i;
    }
  }
  if (!best || *best == in_events) return;
  const std::uint64_t end_line = std::prev(calls.end())->line;
  calls.erase(from, calls.end());
  const auto passes = [&](request about, std::size_t begin, std::size_t end, std::size_t per_pass,
                          std::uint64_t after) {
    std::size_t made = 0;
    for (std::size_t at = begin; at < end; at += per_pass, ++made) {
      std::vector<std::uint8_t> reply;
      reply.reserve(per_pass * profile_record_size);
      for (std::size_t i = at; i < std::min(end, at + per_pass); ++i)
        reply.insert(reply.end(), records[i].bytes.begin(), records[i].bytes.end());
      add_call(about, call_outcome::reply, 0, std::move(reply), records[at].line);
    }
    if (made < events.passes) add_call(about, call_outcome::reply, 0, {}, after);
  };
  passes(request::profile_events, 0, *best, events_per_pass, records[*best].line);
  passes(request::profiler_log, *best, count, profiler_per_pass, end_line);
  harvest_->events_end = harvest_->profile.size() - count + *best;
}

void capture_parser::read_profiler() {
  constexpr request about = request::profiler_log;
  failure_parse parsed;
  if (peek_failure(layouts::profiler_open_sites, parsed)) {
    take_failure(parsed);
    const bool no_child = parsed.site->kind == failure_kind::no_child;
    add_call(about, no_child ? call_outcome::no_child : call_outcome::open_failed,
             parsed.failure.value, {}, parsed.failure.line);
    keep(std::move(parsed.failure), about);
  } else {
    for (unsigned pass = 0; pass < profiler.passes; ++pass) {
      if (peek_failure({&layouts::profiler_failed, 1}, parsed)) {
        take_failure(parsed);
        add_call(about, call_outcome::refused, parsed.failure.value, {}, parsed.failure.line);
        keep(std::move(parsed.failure), about);
        break;
      }
      std::vector<std::uint8_t> reply;
      const std::uint64_t line = number();
      take_records(profiler_per_pass, reply);
      const bool empty = reply.empty();
      add_call(about, call_outcome::reply, 0, std::move(reply), line);
      if (empty) break;
    }
  }
  if (at_record()) {
    const std::uint64_t first = number();
    std::vector<std::uint8_t> extra;
    take_records(events.passes * events_per_pass, extra);
    add_damage({.kind = problem_kind::extra_profile_lines, .line = first, .last_line = number() - 1});
  }
}

}  // namespace inspect
