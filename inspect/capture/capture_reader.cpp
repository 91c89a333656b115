#include "inspect/capture/capture_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <deque>
#include <optional>
#include <span>
#include <sstream>

#include "inspect/capture/failure_text.h"
#include "inspect/capture/hexdump_text.h"
#include "inspect/capture_clock.h"
#include "inspect/input/form_detection.h"
#include "inspect/input/harvest_reader.h"
#include "inspect/utf8.h"
#include "quandor/layouts/harvest_requests.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/calendar_time.h"
#include "liblog_zol/profile_record.h"
#include "liblog_zol/text_printer.h"
#include "quandor/layouts/record_layouts.h"

namespace inspect {
namespace {

using layouts::request_row;
constexpr auto state_requests = layouts::step_requests(layouts::harvest_step::state_dumps);
constexpr auto feature_reports = layouts::step_requests(layouts::harvest_step::hid_reports).subspan(1);
constexpr std::string_view stats_banner = request_row(layouts::request::stats).banner;
constexpr std::string_view profile_banner = request_row(layouts::request::profile_events).banner;
constexpr std::string_view assets_banner = request_row(layouts::request::assets).banner;
constexpr std::int64_t line_stats_failed = request_row(layouts::request::stats).step_failure.line;
constexpr std::int64_t line_assets_failed = request_row(layouts::request::assets).step_failure.line;
constexpr std::int64_t line_no_pairs = layouts::hid_no_pairs.line;
constexpr std::int64_t line_no_matching = layouts::hid_no_matching.line;
constexpr std::int64_t line_no_device_service = layouts::hid_no_service.line;
constexpr std::int64_t line_no_device = layouts::hid_no_device.line;
constexpr std::int64_t line_device_open_failed = layouts::hid_open_failed.line;
using state_request = layouts::harvest_request;
using feature_report = layouts::harvest_request;

// The result a failure is given when only standard output was captured.
constexpr std::uint32_t unseen_refusal = 0xe00002c7;
constexpr std::uint32_t service_not_found = 0xe00002f0;

constexpr unsigned max_passes = 10;
constexpr std::size_t events_per_pass = 0x10000 / profile_record_size;  // 1365
constexpr std::size_t profiler_per_pass = 48000 / profile_record_size;  // 1000
constexpr std::size_t assets_capacity = 4096;
constexpr std::size_t report_capacity = 256;
constexpr std::size_t dump_line_bytes = 16;

constexpr std::int64_t line_no_service = 2903;
constexpr std::int64_t line_open_failed = 2906;
constexpr std::int64_t line_no_connection = 2907;
constexpr std::int64_t line_call_failed = 2910;
constexpr std::int64_t line_events_failed = 1871;
constexpr std::int64_t line_profiler_failed = 2239;

struct access_result {
  call_outcome outcome = call_outcome::reply;
  std::uint32_t value = 0;
  std::uint64_t line = 0;

  bool failed() const {
    return outcome != call_outcome::reply && outcome != call_outcome::zero_connection;
  }
  std::uint32_t step_value() const {
    return outcome == call_outcome::missing ? service_not_found : value;
  }
};

class capture_parser {
 public:
  // Which reader printed a record does not show; with `by_sequence` the
  // profile service's log is ended where the sequence numbers jump most.
  capture_parser(std::vector<std::string_view> lines, const capture_options& options,
                 capture_model& model, bool by_sequence)
      : lines_(std::move(lines)), options_(options), model_(model), by_sequence_(by_sequence) {
    line_numbers_.resize(lines_.size());
    for (std::size_t i = 0; i < line_numbers_.size(); ++i) line_numbers_[i] = i + 1;
  }

  bool run() {
    model_.has_stderr = std::any_of(lines_.begin(), lines_.end(), [](std::string_view line) {
      return line.starts_with(failure_start);
    });
    if (lines_.empty()) return refuse(1, "empty capture: no harvest in it");
    while (!done()) {
      model_.harvests.emplace_back();
      harvest_ = &model_.harvests.back();
      harvest_->line = number();
      if (!read_stats() || !read_states() || !read_profile() || !read_assets() || !read_hid())
        return false;
    }
    return check_profile_lines();
  }

  std::uint64_t fault_line = 0;
  std::string fault;

 private:
  bool done() const { return at_ >= lines_.size(); }
  std::string_view peek() const { return done() ? std::string_view{} : lines_[at_]; }
  std::uint64_t number() const {
    return at_ < line_numbers_.size() ? line_numbers_[at_] : line_numbers_.empty() ? 1 : line_numbers_.back() + 1;
  }
  bool at_failure() const { return !done() && peek().starts_with(failure_start); }
  bool at_record() const { return !done() && peek().starts_with(profile_line_start); }

  bool refuse(std::uint64_t line, std::string text) {
    fault_line = line;
    fault = std::move(text);
    return false;
  }
  bool expected(std::string_view what) {
    if (done()) return refuse(number(), "the capture ends where " + std::string(what) + " belongs");
    // A failure line out of place may be one the collector never writes.
    failure_parse parsed;
    std::string why;
    if (at_failure() && !parse_failure_line(peek(), hex_numbers_, parsed, why)) return refuse(number(), why);
    return refuse(number(), std::string(what) + " expected here");
  }

  // The failure line under the cursor, consumed and kept in the model.
  bool take_failure(failure_parse& parsed) {
    std::string why;
    if (!parse_failure_line(peek(), hex_numbers_, parsed, why)) return refuse(number(), why);
    parsed.failure.line = number();
    if (parsed.has_value) hex_numbers_ = true;
    ++at_;
    return true;
  }

  bool peek_failure(std::string_view module, std::initializer_list<std::int64_t> source_lines,
                    failure_parse& parsed, std::size_t ahead = 0) {
    if (at_ + ahead >= lines_.size() || !lines_[at_ + ahead].starts_with(failure_start)) return false;
    std::string why;
    // A line with a value turns later numbers hexadecimal.
    const bool hex = hex_numbers_ || (ahead > 0 && lines_[at_].ends_with(")"));
    if (!parse_failure_line(lines_[at_ + ahead], hex, parsed, why)) return false;
    return parsed.failure.module == module &&
           std::find(source_lines.begin(), source_lines.end(), parsed.failure.source_line) !=
               source_lines.end();
  }

  void keep(failure_line failure, request about) {
    failure.about = about;
    harvest_->failures.push_back(std::move(failure));
  }

  void add_call(request about, call_outcome outcome, std::uint32_t value,
                std::vector<std::uint8_t> reply, std::uint64_t line, std::uint8_t report_id = 0) {
    harvest_->calls.push_back({about, report_id, outcome, value, std::move(reply), line});
  }

  // The access layer's own line for a one-shot request, if it wrote one.
  bool take_access(request about, access_result& result) {
    result = {};
    failure_parse parsed;
    if (!peek_failure("varnel", {line_no_service, line_open_failed, line_no_connection, line_call_failed},
                      parsed))
      return true;
    if (!take_failure(parsed)) return false;
    switch (parsed.failure.source_line) {
      case line_no_service: result.outcome = call_outcome::missing; break;
      case line_open_failed: result.outcome = call_outcome::open_failed; break;
      case line_no_connection: result.outcome = call_outcome::zero_connection; break;
      default: result.outcome = call_outcome::refused; break;
    }
    result.value = parsed.failure.value;
    result.line = parsed.failure.line;
    keep(std::move(parsed.failure), about);
    return true;
  }

  // The step's own line after a failed request, carrying its result.
  bool take_step_failure(std::string_view module, std::int64_t source_line, request about,
                         const access_result& access) {
    failure_parse parsed;
    if (!peek_failure(module, {source_line}, parsed))
      return expected("the failure line of " + std::string(module) + " line " +
                      std::to_string(source_line));
    if (!take_failure(parsed)) return false;
    if (parsed.failure.value != access.step_value())
      return refuse(parsed.failure.line, "the step's failure carries another result than the request's");
    keep(std::move(parsed.failure), about);
    return true;
  }

  std::span<const std::string_view> block(std::size_t count) const {
    return std::span<const std::string_view>(lines_).subspan(
        at_, std::min(count, lines_.size() - at_));
  }

  bool read_stats() {
    access_result access;
    if (!take_access(request::stats, access)) return false;
    if (access.failed()) {
      add_call(request::stats, access.outcome, access.value, {}, access.line);
      return take_step_failure("kelvra", line_stats_failed, request::stats, access);
    }
    if (peek() != stats_banner) {
      if (access.outcome == call_outcome::zero_connection || model_.has_stderr ||
          peek() != state_requests[0].banner)
        return expected("the statistics banner");
      add_call(request::stats, call_outcome::refused, unseen_refusal, {}, number());
      return true;
    }
    stats_block stats;
    stats.line = number();
    ++at_;
    if (peek() == "pkey_stats") {
      layouts::parse_fault why;
      const auto record = layouts::parse_stats(block(layouts::stats_lines), why);
      if (!record) return refuse(number() + why.line, why.message);
      stats.record = *record;
      at_ += layouts::stats_lines;
      stats.printed = true;
    }
    if (access.outcome == call_outcome::zero_connection) {
      // The step's own buffer starts zeroed and is printed whole.
      if (!stats.printed || std::any_of(stats.record.begin(), stats.record.end(),
                                        [](std::uint8_t b) { return b != 0; }))
        return refuse(stats.line, "statistics after a zero connection print the zeroed buffer");
      add_call(request::stats, call_outcome::zero_connection, 0, {}, access.line);
    } else {
      std::vector<std::uint8_t> reply;
      if (stats.printed) reply.assign(stats.record.begin(), stats.record.end());
      add_call(request::stats, call_outcome::reply, 0, std::move(reply), stats.line);
    }
    harvest_->stats = stats;
    return true;
  }

  bool read_states() {
    // The shared buffer as the replies chosen here leave it, and the
    // length each request is offered.
    std::array<std::uint8_t, 12> buffer{};
    std::size_t length = 4096;
    for (std::size_t row = 0; row < state_requests.size(); ++row) {
      const state_request& entry = state_requests[row];
      const auto about = static_cast<request>(static_cast<int>(request::lyn_state) + static_cast<int>(row));
      if (peek() != entry.banner) return expected("the banner \"" + std::string(entry.banner) + "\"");
      state_dump dump{about, number(), std::nullopt};
      ++at_;
      access_result access;
      if (!take_access(about, access)) return false;
      if (access.failed()) {
        add_call(about, access.outcome, access.value, {}, access.line);
        harvest_->states.push_back(dump);
        return take_step_failure("kelvra", entry.step_failure.line, about, access);
      }
      if (peek() == state_heading(entry)) {
        std::vector<std::uint8_t> record;
        if (!parse_state(entry, record)) return false;
        dump.record = std::move(record);
      }
      if (access.outcome == call_outcome::zero_connection) {
        const bool prints = length != 0;
        if (prints != dump.record.has_value() ||
            (prints && printed_state(entry, *dump.record) != printed_state(entry, buffer)))
          return refuse(dump.line, "a zero connection prints the shared buffer as the previous reply left it");
        add_call(about, call_outcome::zero_connection, 0, {}, access.line);
      } else if (dump.record) {
        if (length < dump.record->size())
          return refuse(dump.line, "printed after an empty reply that left the shared buffer no room");
        std::copy(dump.record->begin(), dump.record->end(), buffer.begin());
        length = dump.record->size();
        add_call(about, call_outcome::reply, 0, *dump.record, dump.line);
      } else {
        const bool last = row + 1 == state_requests.size();
        if (!last && peek() != state_requests[row + 1].banner && !model_.has_stderr) {
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

  // The heading a state dump's printer starts with.
  static std::string state_heading(const state_request& entry) {
    if (std::string_view(entry.service) != "zol-button") return std::string(entry.service) + " State";
    for (const layouts::counts_heading& heading : layouts::counts_headings)
      if (heading.command == entry.command) return std::string(heading.text);
    return {};
  }

  static std::string printed_state(const state_request& entry, std::span<const std::uint8_t> record) {
    std::ostringstream out;
    if (std::string_view(entry.service) == "zol-button")
      layouts::write_counts(out, entry.command, record);
    else
      layouts::write_power_state(out, entry.service, record);
    return out.str();
  }

  bool parse_state(const state_request& entry, std::vector<std::uint8_t>& record) {
    layouts::parse_fault why;
    const bool counts = std::string_view(entry.service) == "zol-button";
    const auto lines = block(counts ? layouts::counts_lines : layouts::power_state_lines);
    if (counts) {
      const auto parsed = layouts::parse_counts(lines, why);
      if (!parsed) return refuse(number() + why.line, why.message);
      record.assign(parsed->record.begin(), parsed->record.end());
    } else {
      const auto parsed = layouts::parse_power_state(lines, why);
      if (!parsed) return refuse(number() + why.line, why.message);
      record.assign(parsed->record.begin(), parsed->record.end());
    }
    at_ += lines.size();
    return true;
  }

  bool take_records(std::size_t most, std::vector<std::uint8_t>& reply) {
    std::size_t count = 0;
    while (count < most && at_record()) {
      profile_entry entry;
      input_record record;
      std::string why;
      entry.line = number();
      if (!parse_profile_line(peek(), record, why)) {
        // A text field may hold a line end: the record goes on below.
        if (!join_record_lines(record)) return refuse(number(), why);
      }
      entry.bytes = record.bytes;
      if (record.calendar_text) entry.calendar_text = std::string(*record.calendar_text);
      reply.insert(reply.end(), entry.bytes.begin(), entry.bytes.end());
      harvest_->profile.push_back(std::move(entry));
      record_texts_.push_back(peek());
      ++at_;
      ++count;
    }
    return true;
  }

  // The record line under the cursor and the lines its text runs on to,
  // joined: kept in joined_ and standing in for the first line.
  bool join_record_lines(input_record& record) {
    constexpr std::size_t longest_run = 33;  // a line end in each payload byte
    std::string joined(peek());
    for (std::size_t more = 1; more < longest_run && at_ + more < lines_.size(); ++more) {
      joined += '\n';
      joined += lines_[at_ + more];
      std::string why;
      if (parse_profile_line(joined, record, why)) {
        joined_.push_back(std::move(joined));
        lines_[at_] = joined_.back();
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(at_) + 1,
                     lines_.begin() + static_cast<std::ptrdiff_t>(at_ + more) + 1);
        line_numbers_.erase(line_numbers_.begin() + static_cast<std::ptrdiff_t>(at_) + 1,
                            line_numbers_.begin() + static_cast<std::ptrdiff_t>(at_ + more) + 1);
        return true;
      }
    }
    return false;
  }

  bool read_profile() {
    if (peek() != profile_banner) return expected("the profile banner");
    ++at_;
    harvest_->profile_banner = true;
    bool events_done = false;
    const std::size_t first_call = harvest_->calls.size();
    for (unsigned pass = 0; pass < max_passes && !events_done; ++pass) {
      access_result access;
      if (events_failure_ahead() && !take_access(request::profile_events, access)) return false;
      if (access.failed()) {
        add_call(request::profile_events, access.outcome, access.value, {}, access.line);
        if (!take_step_failure("varnel", line_events_failed, request::profile_events, access))
          return false;
        harvest_->events_end = harvest_->profile.size();
        break;
      }
      std::vector<std::uint8_t> reply;
      const std::uint64_t line = number();
      if (access.outcome == call_outcome::zero_connection) {
        // The whole 64 KiB buffer, never written, is printed.
        if (!take_records(events_per_pass, reply)) return false;
        if (reply.size() != events_per_pass * profile_record_size ||
            std::any_of(reply.begin(), reply.end(), [](std::uint8_t b) { return b != 0; }))
          return refuse(line, "a zero connection to the profile service prints 1365 zeroed records");
        add_call(request::profile_events, call_outcome::zero_connection, 0, {}, access.line);
        continue;
      }
      if (!take_records(events_per_pass, reply)) return false;
      events_done = reply.empty();
      add_call(request::profile_events, call_outcome::reply, 0, std::move(reply), line);
    }
    // Ten full passes end the events reader where the capture cannot show it.
    if (!harvest_->events_end && !events_done) harvest_->events_end = harvest_->profile.size();
    if (!read_profiler()) return false;
    if (by_sequence_) split_by_sequence(first_call);
    return true;
  }

  // Each log numbers its own records, so the widest jump between records
  // that follow each other is where the profile service's log most likely
  // gives way to the profiler's. Only for two readers that both answered
  // every pass, and only where both can then print their share.
  void split_by_sequence(std::size_t first_call) {
    std::vector<device_call>& calls = harvest_->calls;
    const auto from = calls.begin() + static_cast<std::ptrdiff_t>(first_call);
    const auto profiler = std::find_if(from, calls.end(),
                                       [](const device_call& c) { return c.about == request::profiler_log; });
    if (from == profiler || profiler == calls.end()) return;
    const auto ended = [](auto begin, auto end) {
      return std::distance(begin, end) == max_passes || std::prev(end)->reply.empty();
    };
    if (!std::all_of(from, calls.end(), [](const device_call& c) { return c.outcome == call_outcome::reply; }) ||
        !ended(from, profiler) || !ended(profiler, calls.end()))
      return;
    std::size_t count = 0, events = 0;
    for (auto call = from; call != calls.end(); ++call) {
      count += call->reply.size() / profile_record_size;
      if (call < profiler) events = count;
    }
    const std::span<const profile_entry> records(harvest_->profile.data() + harvest_->profile.size() - count, count);
    std::optional<std::size_t> best;
    std::uint32_t widest = 0;
    for (std::size_t i = 1; i < count; ++i) {
      std::uint32_t previous = 0, sequence = 0;
      std::memcpy(&previous, records[i - 1].bytes.data() + 4, sizeof previous);
      std::memcpy(&sequence, records[i].bytes.data() + 4, sizeof sequence);
      const std::uint32_t ahead = sequence - (previous + 1), behind = (previous + 1) - sequence;
      const std::uint32_t width = std::min(ahead, behind);
      if (width > widest && i <= max_passes * events_per_pass && count - i <= max_passes * profiler_per_pass) {
        widest = width;
        best = i;
      }
    }
    if (!best || *best == events) return;
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
      if (made < max_passes) add_call(about, call_outcome::reply, 0, {}, after);
    };
    passes(request::profile_events, 0, *best, events_per_pass, records[*best].line);
    passes(request::profiler_log, *best, count, profiler_per_pass, end_line);
  }

  // Whether the access line under the cursor is the events reader's own: a
  // failed request is followed by its 1871 line, a zero connection by the
  // records of the buffer. Otherwise it is the assets step's.
  bool events_failure_ahead() {
    failure_parse parsed;
    if (!peek_failure("varnel", {line_no_service, line_open_failed, line_no_connection, line_call_failed},
                      parsed))
      return false;
    if (parsed.failure.source_line == line_no_connection)
      return at_ + 1 < lines_.size() && lines_[at_ + 1].starts_with(profile_line_start);
    failure_parse step;
    return peek_failure("varnel", {line_events_failed}, step, 1);
  }

  bool read_profiler() {
    failure_parse parsed;
    if (peek_failure("varnel", {1946, 1949}, parsed)) {
      if (!take_failure(parsed)) return false;
      const bool no_child = parsed.failure.kind == failure_kind::no_child;
      add_call(request::profiler_log, no_child ? call_outcome::no_child : call_outcome::open_failed,
               parsed.failure.value, {}, parsed.failure.line);
      keep(std::move(parsed.failure), request::profiler_log);
    } else {
      for (unsigned pass = 0; pass < max_passes; ++pass) {
        if (peek_failure("varnel", {line_profiler_failed}, parsed)) {
          if (!take_failure(parsed)) return false;
          add_call(request::profiler_log, call_outcome::refused, parsed.failure.value, {},
                   parsed.failure.line);
          keep(std::move(parsed.failure), request::profiler_log);
          break;
        }
        std::vector<std::uint8_t> reply;
        const std::uint64_t line = number();
        if (!take_records(profiler_per_pass, reply)) return false;
        const bool empty = reply.empty();
        add_call(request::profiler_log, call_outcome::reply, 0, std::move(reply), line);
        if (empty) break;
      }
    }
    if (at_record()) return refuse(number(), "more profile lines than the two readers print");
    return true;
  }

  bool read_assets() {
    access_result access;
    if (!take_access(request::assets, access)) return false;
    if (access.failed()) {
      add_call(request::assets, access.outcome, access.value, {}, access.line);
      return take_step_failure("kelvra", line_assets_failed, request::assets, access);
    }
    if (peek() != assets_banner) {
      if (access.outcome == call_outcome::zero_connection || model_.has_stderr) return expected("the assets banner");
      add_call(request::assets, call_outcome::refused, unseen_refusal, {}, number());
      return true;
    }
    assets_block assets;
    assets.line = number();
    ++at_;
    if (peek().starts_with("Length: ")) {
      layouts::parse_fault why;
      const auto parsed = layouts::parse_assets(block(layouts::assets_lines), why);
      if (!parsed) return refuse(number() + why.line, why.message);
      if (parsed->length > assets_capacity)
        return refuse(number(), "an asset reply longer than the 4096 bytes offered");
      assets.length = parsed->length;
      assets.table = parsed->table;
      at_ += layouts::assets_lines;
    }
    if (access.outcome == call_outcome::zero_connection) {
      if (assets.length != assets_capacity ||
          std::any_of(assets.table.begin(), assets.table.end(), [](std::uint8_t b) { return b != 0; }))
        return refuse(assets.line, "assets after a zero connection print the zeroed 4096-byte buffer");
      add_call(request::assets, call_outcome::zero_connection, 0, {}, access.line);
    } else {
      std::vector<std::uint8_t> reply(assets.length, 0);
      std::copy_n(assets.table.begin(), std::min<std::size_t>(assets.length, assets.table.size()),
                  reply.begin());
      add_call(request::assets, call_outcome::reply, 0, std::move(reply), assets.line);
    }
    harvest_->assets = assets;
    return true;
  }

  bool read_hid() {
    failure_parse parsed;
    if (peek_failure("kelvra", {line_no_pairs, line_no_matching, line_no_device_service, line_no_device,
                                line_device_open_failed},
                     parsed)) {
      if (!take_failure(parsed)) return false;
      const std::int64_t source_line = parsed.failure.source_line;
      if (source_line == line_no_pairs || source_line == line_no_matching)
        return refuse(parsed.failure.line, "a phone description cannot make the HID matching fail");
      const call_outcome outcome = source_line == line_no_device_service ? call_outcome::missing
                                   : source_line == line_no_device      ? call_outcome::not_created
                                                                        : call_outcome::open_failed;
      add_call(request::hid_device, outcome, parsed.failure.value, {}, parsed.failure.line);
      keep(std::move(parsed.failure), request::hid_device);
      return true;
    }
    if (peek() != feature_reports[0].banner) {
      if (model_.has_stderr) return expected("the first HID report banner or the device's failure line");
      add_call(request::hid_device, call_outcome::missing, 0, {}, number());
      return true;
    }
    add_call(request::hid_device, call_outcome::reply, 0, {}, number());
    for (std::size_t row = 0; row < feature_reports.size(); ++row) {
      const feature_report& entry = feature_reports[row];
      if (peek() != entry.banner) return expected("the banner \"" + std::string(entry.banner) + "\"");
      hid_report report{static_cast<std::uint8_t>(entry.command), number(), {}, false};
      ++at_;
      if (peek_failure("kelvra", {entry.step_failure.line}, parsed)) {
        if (!take_failure(parsed)) return false;
        report.failed = true;
        add_call(request::hid_report, call_outcome::refused, parsed.failure.value, {},
                 parsed.failure.line, static_cast<std::uint8_t>(entry.command));
        keep(std::move(parsed.failure), request::hid_report);
        harvest_->hid.push_back(std::move(report));
        return true;
      }
      while (looks_like_hexdump(peek()) && report.bytes.size() < report_capacity) {
        std::string why;
        if (!read_hexdump_line(peek(), report.bytes.size(), report.bytes, why))
          return refuse(number(), why);
        ++at_;
        if (report.bytes.size() % dump_line_bytes != 0) break;
      }
      const bool last = row + 1 == feature_reports.size();
      if (report.bytes.empty() && !last && peek() != feature_reports[row + 1].banner &&
          !model_.has_stderr) {
        report.failed = true;
        add_call(request::hid_report, call_outcome::refused, unseen_refusal, {}, report.line, static_cast<std::uint8_t>(entry.command));
        harvest_->hid.push_back(std::move(report));
        return true;
      }
      add_call(request::hid_report, call_outcome::reply, 0, report.bytes, report.line, static_cast<std::uint8_t>(entry.command));
      harvest_->hid.push_back(std::move(report));
    }
    return true;
  }

  // The first text names its microsecond only: the pair's calendar may lie
  // anywhere in it. A later clock reading that wraps tells where, as each
  // text holds for a run of those offsets.
  void refine_pair(zol::timesync_pair& pair) const {
    const auto holds = [&](const profile_entry& entry, std::int64_t offset) {
      return text_holds(entry, pair, offset);
    };
    std::int64_t low = 0, high = 999;
    for (const harvest_model& harvest : model_.harvests) {
      for (const profile_entry& entry : harvest.profile) {
        if (!entry.calendar_text) continue;
        const bool at_low = holds(entry, low), at_high = holds(entry, high);
        if (at_low == at_high) {
          if (!at_low) break;  // no offset holds: the check below says where
          continue;
        }
        // Bisect to the edge of the run that holds.
        std::int64_t in = at_low ? low : high, out = at_low ? high : low;
        while (in - out > 1 || out - in > 1) {
          const std::int64_t middle = (in + out) / 2;
          (holds(entry, middle) ? in : out) = middle;
        }
        (at_low ? high : low) = in;
      }
    }
    pair.calendar = static_cast<std::int64_t>(static_cast<std::uint64_t>(pair.calendar) +
                                              static_cast<std::uint64_t>(low));
  }

  // Every profile line must be what its bytes print, on one clock pair.
  bool check_profile_lines() {
    std::vector<const profile_entry*> texts;
    for (const harvest_model& harvest : model_.harvests)
      for (const profile_entry& entry : harvest.profile)
        if (entry.calendar_text) texts.push_back(&entry);
    if (texts.empty()) return lines_hold(std::nullopt, true);
    // The year names the first text's; a record far off in time may be
    // another year's, so later texts are tried as the anchor too.
    constexpr std::size_t most_anchors = 16;
    std::optional<zol::timesync_pair> first_pair;
    // A capture that crosses a new year names the later year: the year
    // before is tried too, and the one after.
    // A pair without its calendar half puts every text in 1970.
    std::vector<std::optional<int>> years{options_.year};
    if (options_.year)
      years.insert(years.end(), {*options_.year - 1, *options_.year + 1});
    else
      years.push_back(1970);
    for (const std::optional<int>& year : years) {
      for (std::size_t anchor = 0; anchor < std::min(texts.size(), most_anchors); ++anchor) {
        const profile_entry& entry = *texts[anchor];
        capture_clock recovered(year);
        std::string why;
        if (!recovered.next_record(zol::profile_record(entry.bytes.data()).timestamp(),
                                   std::string_view(*entry.calendar_text), why) ||
            !recovered.pair()) {
          if (anchor == 0 && year == options_.year) return refuse(entry.line, why);
          continue;
        }
        if (!first_pair) first_pair = recovered.pair();
        if (anchor_holds(entry, *recovered.pair())) return true;
      }
    }
    zol::timesync_pair pair = *first_pair;
    refine_pair(pair);
    return lines_hold(pair, true);
  }

  // The pair from one text, or one a DST change away: a local time the
  // clocks go back over names two instants, and later texts tell which.
  bool anchor_holds(const profile_entry& entry, const zol::timesync_pair& found) {
    constexpr std::int64_t half_hour = 1800LL * 1000000000LL;
    for (const std::int64_t shift : {0, -1, 1, -2, 2, -4, 4}) {
      zol::timesync_pair pair = found;
      pair.calendar += shift * half_hour;
      if (!text_holds(entry, pair, 0)) continue;
      refine_pair(pair);
      if (lines_hold(pair, false)) {
        model_.timesync = pair;
        return true;
      }
    }
    return false;
  }

  static bool text_holds(const profile_entry& entry, const zol::timesync_pair& pair, std::int64_t offset) {
    zol::timesync_pair moved = pair;
    moved.calendar = static_cast<std::int64_t>(static_cast<std::uint64_t>(pair.calendar) +
                                               static_cast<std::uint64_t>(offset));
    zol::calendar_text made;
    const std::uint64_t timestamp = zol::profile_record(entry.bytes.data()).timestamp();
    return zol::make_calendar_text(zol::calendar_microseconds(timestamp, moved), made) &&
           made.view() == *entry.calendar_text;
  }

  // Every profile line must be what its bytes print on `pair`; `report`
  // says where not.
  bool lines_hold(const std::optional<zol::timesync_pair>& pair, bool report) {
    zol::no_clock none;
    std::optional<zol::fixed_clock> fixed;
    if (pair) fixed.emplace(*pair);
    zol::clock_source& clock = fixed ? static_cast<zol::clock_source&>(*fixed) : none;
    zol::text_printer printer;
    std::size_t text = 0;
    for (const harvest_model& harvest : model_.harvests) {
      for (const profile_entry& entry : harvest.profile) {
        printer.clear();
        decode_profile_record(printer, entry.bytes.data(), clock);
        const std::string_view line = record_texts_[text++];
        if (printer.view() != line) {
          if (!report) return false;
          const bool calendar_only = entry.calendar_text.has_value() &&
                                     line.substr(0, line.rfind(", 'calendar-time'")) ==
                                         printer.view().substr(0, printer.view().rfind(", 'calendar-time'"));
          return refuse(entry.line, calendar_only
                                        ? "calendar-time does not follow from the clock pair of the "
                                          "first calendar time (a phone has one pair)"
                                        : "profile line is not what its binary-data prints");
        }
        if (!valid_utf8(line))
          return report && refuse(entry.line, "the collector prints no line for a record whose text is not UTF-8");
      }
    }
    return true;
  }

  std::vector<std::string_view> lines_;
  std::vector<std::uint64_t> line_numbers_;  // of lines_, as they stand in the capture
  std::deque<std::string> joined_;           // records that ran over several lines
  std::vector<std::string_view> record_texts_;
  const capture_options& options_;
  capture_model& model_;
  const bool by_sequence_;
  harvest_model* harvest_ = nullptr;
  std::size_t at_ = 0;
  bool hex_numbers_ = false;
};

// Lines without their ends; a capture that ends every line in CR LF (saved
// on another system) loses the CRs.
std::vector<std::string_view> split_lines(std::string_view text) {
  std::vector<std::string_view> lines;
  bool crlf = true;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    crlf = crlf && line.ends_with('\r');
    lines.push_back(line);
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  if (crlf)
    for (std::string_view& line : lines) line.remove_suffix(1);
  return lines;
}

}  // namespace

bool read_capture_text(std::string_view text, const std::string& file,
                       const capture_options& options, capture_model& model,
                       input_fault& fault) {
  const std::vector<std::string_view> lines = split_lines(text);
  model = {};
  capture_parser parser(lines, options, model, true);
  if (parser.run()) return true;
  // The jump may have been a gap within one log after all.
  model = {};
  capture_parser plain(lines, options, model, false);
  if (plain.run()) return true;
  fault = {file, "line " + std::to_string(plain.fault_line), plain.fault};
  return false;
}

bool read_capture(const std::string& file, const capture_options& options,
                  capture_model& model, input_fault& fault) {
  const std::unique_ptr<byte_source> source = open_file(file, fault);
  if (!source) return false;
  std::string text;
  text.reserve(static_cast<std::size_t>(source->size()));
  std::array<char, 1 << 16> chunk;
  for (;;) {
    std::size_t got = 0;
    std::string why;
    if (!source->read(chunk, got, why)) {
      fault = {file, "byte " + std::to_string(text.size()), why};
      return false;
    }
    if (got == 0) break;
    text.append(chunk.data(), got);
  }
  return read_capture_text(text, file, options, model, fault);
}

}  // namespace inspect
