// The capture reader: the capture's lines through the one line splitter and
// the harvest tokens, the grammar's driver and its recovery, the statistics,
// state-dump and asset steps, and the checks made after the grammar (each
// profile line against its bytes, the clock pair of the calendar texts).

#include "inspect/capture/capture_reader.h"

#include <algorithm>
#include <sstream>

#include "inspect/capture/capture_parser.h"
#include "inspect/capture/failure_meaning.h"
#include "inspect/input/input_reader.h"
#include "inspect/input/utf8.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/profile_record.h"
#include "liblog_zol/text_printer.h"
#include "quandor/layouts/record_layouts.h"

namespace inspect {
namespace {

using layouts::harvest_request;
using layouts::request_row;

constexpr std::size_t row_count = std::size(layouts::harvest_requests);
constexpr std::size_t row_of(request about) { return static_cast<std::size_t>(about); }

std::string banner_words(request about) {
  return "the banner \"" + std::string(request_row(about).banner) + "\"";
}

// The heading a state dump's printer starts with.
std::string state_heading(const harvest_request& entry) {
  if (entry.service != "zol-button") return std::string(entry.service) + " State";
  for (const layouts::counts_heading& heading : layouts::counts_headings)
    if (heading.command == entry.command) return std::string(heading.text);
  return {};
}

std::string printed_state(const harvest_request& entry, std::span<const std::uint8_t> record) {
  std::ostringstream out;
  if (entry.service == "zol-button")
    layouts::write_counts(out, entry.command, record);
  else
    layouts::write_power_state(out, entry.service, record);
  return out.str();
}

// Texts of one capture, kept in blocks that never move.
class text_arena {
 public:
  std::string_view keep(std::string_view text) {
    if (blocks_.empty() || blocks_.back().capacity() - blocks_.back().size() < text.size()) {
      blocks_.emplace_back();
      blocks_.back().reserve(std::max(block_size, text.size()));
    }
    std::string& block = blocks_.back();
    const std::size_t at = block.size();
    block += text;
    return std::string_view(block).substr(at, text.size());
  }

 private:
  static constexpr std::size_t block_size = 1 << 20;
  std::vector<std::string> blocks_;
};

}  // namespace

capture_parser::capture_parser(std::vector<capture_line> lines, std::vector<capture_record> records,
                               capture_model& model, damage_log& damage,
                               const year_preference& years, bool cut_short)
    : lines_(std::move(lines)),
      records_(std::move(records)),
      model_(model),
      damage_(damage),
      years_(years),
      cut_short_(cut_short) {
  // A failure line the collector cannot have written is damage wherever it
  // stands; the grammar never sees it.
  std::erase_if(lines_, [&](const capture_line& line) {
    if (line.kind != token_kind::failure) return false;
    failure_parse parsed;
    std::string why;
    if (parse_failure_line(line.text, parsed, why)) return false;
    add_damage(line.number, 0, why, "line skipped");
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

void capture_parser::add_damage(std::uint64_t line, std::uint64_t last, std::string fault,
                                std::string outcome) {
  damage_.add({line, last, {}, std::move(fault), std::move(outcome), true});
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
  if (parsed.hex_line_number != hex_numbers_)
    add_damage(parsed.failure.line, 0,
               hex_numbers_ ? "line number in decimal after a failure line set hexadecimal"
                            : "line number in hexadecimal before any failure line set it",
               "read as it stands");
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
  if (!peek_failure(layouts::one_shot_sites, parsed)) return;
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
    add_damage(number(), 0, expected + " is missing", "the request is taken as failed");
    return true;
  }
  take_failure(parsed);
  if (parsed.failure.value != access.step_value())
    add_damage(parsed.failure.line, 0, "the step's failure carries another result than the request's",
               "read as it stands");
  keep(std::move(parsed.failure), about);
  return true;
}

std::span<const capture_line> capture_parser::block(std::size_t count) const {
  return std::span<const capture_line>(lines_).subspan(at_, std::min(count, lines_.size() - at_));
}

// A block whose lines do not read back: its text lines are passed over.
void capture_parser::skip_block(std::uint64_t first, const std::string& what, const std::string& why) {
  std::uint64_t last = first;
  while (!done() && lines_[at_].kind == token_kind::text) last = lines_[at_++].number;
  add_damage(first, last, what + " cannot be read: " + why, "passed over");
}

void capture_parser::cut_harvest(const std::string& expected) {
  const std::size_t index = static_cast<std::size_t>(harvest_ - model_.harvests.data()) + 1;
  harvest_->cut = "at line " + std::to_string(number()) + ", where " + expected + " belongs";
  add_damage(number(), 0,
             "the capture ends inside harvest " + std::to_string(index) + ", where " + expected +
                 " belongs",
             "the rest of the harvest is missing");
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
    add_damage(number(), 0, "not the banner \"" + std::string(entry.banner) + "\"",
               "taken for it (spoiled)");
    lines_[at_].kind = token_kind::banner;
    lines_[at_].request = here;
    return true;
  }
  std::uint64_t first = 0, last = 0;
  while (!done() && lines_[at_].kind == token_kind::text) {
    if (first == 0) first = number();
    last = lines_[at_++].number;
  }
  if (first != 0) add_damage(first, last, expected + " expected here", "passed over");
  if (done()) {
    cut_harvest(expected);
    return false;
  }
  const std::size_t row = anchor_row(at_).value_or(here);
  if (row == here) {
    if (first == 0) add_damage(number(), 0, expected + " is missing", "read on");
    return true;
  }
  if (row > here) {
    add_damage(number(), 0,
               expected + " is missing, and what follows it up to \"" +
                   std::string(layouts::harvest_requests[row].label) + "\"",
               "read on from there");
    jump_ = row;
    return false;
  }
  const std::size_t index = static_cast<std::size_t>(harvest_ - model_.harvests.data()) + 1;
  harvest_->cut = "at line " + std::to_string(number()) + ", where a new harvest starts";
  add_damage(number(), 0,
             "harvest " + std::to_string(index) + " ends where " + expected +
                 " belongs: a new harvest starts here",
             "the rest of the harvest is missing");
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
    read_harvest();
  }
  check_profile_lines();
}

bool capture_parser::read_stats() {
  constexpr request about = request::stats;
  access_result access;
  take_access(about, access);
  if (access.failed()) {
    add_call(about, access.outcome, access.value, {}, access.line);
    return take_step_failure(about, access);
  }
  if (!at_banner(about)) {
    const bool unseen = access.outcome != call_outcome::zero_connection && !model_.has_stderr &&
                        (at_banner(request::lyn_state) || (done() && !cut_short_));
    if (unseen) {
      add_call(about, call_outcome::refused, unseen_refusal, {}, number());
      return true;
    }
    if (!recover(row_of(about), banner_words(about))) return false;
    if (!at_banner(about)) return true;
  }
  stats_block stats;
  stats.line = number();
  ++at_;
  if (peek() == "pkey_stats") {
    layouts::parse_fault why;
    const auto lines = block(layouts::stats_lines);
    std::vector<std::string_view> texts;
    for (const capture_line& line : lines) texts.push_back(line.text);
    const auto record = layouts::parse_stats(texts, why);
    if (record) {
      stats.record = *record;
      at_ += lines.size();
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
      add_damage(stats.line, 0, "statistics after a zero connection print the zeroed buffer",
                 "read as printed");
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
  const bool counts = entry.service == "zol-button";
  const auto lines = block(counts ? layouts::counts_lines : layouts::power_state_lines);
  std::vector<std::string_view> texts;
  for (const capture_line& line : lines) texts.push_back(line.text);
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
  at_ += lines.size();
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
        add_damage(dump.line, 0,
                   "a zero connection prints the shared buffer as the previous reply left it",
                   "read as printed");
      add_call(about, call_outcome::zero_connection, 0, {}, access.line);
    } else if (dump.record) {
      if (whole && length < dump.record->size())
        add_damage(dump.line, 0, "printed after an empty reply that left the shared buffer no room",
                   "read as printed");
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
  take_access(about, access);
  if (access.failed()) {
    add_call(about, access.outcome, access.value, {}, access.line);
    return take_step_failure(about, access);
  }
  if (!at_banner(about)) {
    const bool unseen =
        access.outcome != call_outcome::zero_connection && !model_.has_stderr && at_known_line();
    if (unseen) {
      add_call(about, call_outcome::refused, unseen_refusal, {}, number());
      return true;
    }
    if (!recover(row_of(about), banner_words(about))) return false;
    if (!at_banner(about)) return true;
  }
  assets_block assets;
  assets.line = number();
  ++at_;
  if (peek().starts_with("Length: ")) {
    layouts::parse_fault why;
    const auto lines = block(layouts::assets_lines);
    std::vector<std::string_view> texts;
    for (const capture_line& line : lines) texts.push_back(line.text);
    const auto parsed = layouts::parse_assets(texts, why);
    if (parsed && parsed->length <= entry.capacity) {
      assets.length = parsed->length;
      assets.table = parsed->table;
      at_ += lines.size();
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
      add_damage(assets.line, 0, "assets after a zero connection print the zeroed 4096-byte buffer",
                 "read as printed");
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
// for a record whose text is not UTF-8. The calendar times are the clock's.
void capture_parser::check_profile_lines() {
  zol::no_clock none;
  zol::text_printer printer;
  std::string without;
  std::vector<timed_text> texts;
  for (const capture_record* record : kept_records_) {
    printer.clear();
    decode_profile_record(printer, record->bytes.data(), none);
    if (printer.view() != without_calendar(record->text, without))
      add_damage(record->line, record->last_line > record->line ? record->last_line : 0,
                 "profile line is not what its binary-data prints", "read from its binary-data");
    else if (!valid_utf8(record->text))
      add_damage(record->line, 0,
                 "the collector prints no line for a record whose text is not UTF-8",
                 "read from its binary-data");
    if (record->calendar_text)
      texts.push_back({zol::profile_record(record->bytes.data()).timestamp(), *record->calendar_text,
                       record->line});
  }
  model_.clock = recover_clock(texts, years_);
}

bool read_capture(std::unique_ptr<byte_source> source, const std::string& file,
                  const capture_options& options, capture_model& model, input_fault& fault) {
  model = {};
  model.input = file;
  std::optional<opened_input> input =
      open_input(std::move(source), file, {input_form::harvest, options.progress}, fault);
  if (!input) return false;
  if (const std::optional<input_form> form = detect_form(input->buffer->data());
      form && *form != input_form::harvest) {
    fault = {file, "", "not a harvest capture: it holds " + std::string(form_of(*form).name) +
                           " records (decode and records read them)"};
    return false;
  }
  damage_log damage(file, options.messages);
  token_reader tokens(input_form::harvest, std::move(input->buffer), damage, false);
  text_arena arena;
  std::vector<capture_line> lines;
  std::vector<capture_record> records;
  line_token token;
  while (tokens.next(token)) {
    capture_line line{token.kind, token.line, arena.keep(token.text), token.request, 0};
    if (token.kind == token_kind::record) {
      capture_record record{token.record.bytes, token.record.line, token.record.last_line,
                            std::nullopt, line.text};
      if (const auto& text = token.record.calendar_text)
        record.calendar_text =
            line.text.substr(static_cast<std::size_t>(text->data() - token.text.data()), text->size());
      line.record = records.size();
      records.push_back(record);
    }
    lines.push_back(line);
  }
  if (!tokens.saw_form_line()) {
    fault = {file, "", "not a capture: no harvest line in it"};
    return false;
  }
  capture_parser parser(std::move(lines), std::move(records), model, damage, options.years,
                        tokens.cut_short());
  parser.run();
  damage.finish();
  if (options.timesync) {
    model.pair = options.timesync;
    model.pair_given = true;
  } else {
    model.pair = model.clock.pair();
  }
  model.damage = damage.entries();
  model.lost = damage.lost();
  gather_facts(model);
  return true;
}

bool read_capture(const std::string& file, const capture_options& options, capture_model& model,
                  input_fault& fault) {
  std::unique_ptr<byte_source> source = open_file(file, fault);
  if (!source) return false;
  return read_capture(std::move(source), file, options, model, fault);
}

}  // namespace inspect
