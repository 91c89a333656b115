// The capture reader: the capture's lines through the one line splitter and
// the harvest tokens into the grammar, and the checks made after it (each
// profile line against its bytes, the clock pair of the calendar texts).

#include "inspect/capture/capture_reader.h"

#include <algorithm>

#include "inspect/capture/capture_parser.h"
#include "inspect/input/input_reader.h"
#include "inspect/input/utf8.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/profile_record.h"
#include "liblog_zol/text_printer.h"

namespace inspect {
namespace {

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

// Whether the line printed without a clock is the capture's line but for
// its calendar time (the clock's to check).
bool prints_line(std::string_view printed, std::string_view line,
                 std::optional<std::string_view> calendar) {
  if (!calendar) return printed == line;
  const auto before = static_cast<std::size_t>(calendar->data() - line.data());
  if (before < calendar_item_start.size()) return false;
  const std::size_t kept = before - calendar_item_start.size();
  return printed.size() == kept + 1 && printed.back() == '}' &&
         printed.substr(0, kept) == line.substr(0, kept);
}

}  // namespace

void capture_parser::check_profile_lines() {
  zol::no_clock none;
  zol::text_printer printer;
  std::vector<timed_text> texts;
  for (const capture_record* record : kept_records_) {
    printer.clear();
    decode_profile_record(printer, record->bytes.data(), none);
    if (!prints_line(printer.view(), record->text, record->calendar_text))
      add_damage({.kind = problem_kind::profile_text_differs,
                  .line = record->line,
                  .last_line = record->last_line > record->line ? record->last_line : 0});
    else if (!valid_utf8(record->text))
      add_damage({.kind = problem_kind::record_text_not_utf8, .line = record->line});
    if (record->calendar_text)
      texts.push_back({zol::profile_record(record->bytes.data()).timestamp(), *record->calendar_text,
                       record->line});
  }
  model_.clock = recover_clock(texts, years_, zone_);
}

bool read_capture(std::unique_ptr<byte_source> source, const std::string& file,
                  const capture_options& options, capture_model& model, input_fault& fault) {
  std::optional<opened_input> input =
      open_input(std::move(source), file, {input_form::harvest, options.progress}, fault);
  if (!input) return false;
  return read_capture(std::move(*input), file, options, model, fault);
}

bool read_capture(opened_input input, const std::string& file, const capture_options& options,
                  capture_model& model, input_fault& fault) {
  model = {};
  model.input = file;
  const zone_rules* zone = zone_named(options.zone);
  if (zone == nullptr) {
    fault = {file, "", unknown_zone_text(options.zone)};
    return false;
  }
  model.zone = zone;
  if (const std::optional<input_form> form = detect_form(input.buffer->data());
      form && *form != input_form::harvest) {
    fault = {file, "", "not a harvest capture: it holds " + std::string(form_of(*form).name) +
                           " records (decode and records read them)"};
    return false;
  }
  damage_log damage(file, options.messages);
  token_reader tokens(input_form::harvest, std::move(input.buffer), damage, false);
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
  capture_parser parser(std::move(lines), std::move(records), model, damage, options.years, *zone,
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

}  // namespace inspect