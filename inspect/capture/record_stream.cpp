#include "inspect/capture/record_stream.h"

#include <unistd.h>

#include "inspect/input/input_reader.h"
#include "inspect/input/line_reader.h"
#include "liblog_zol/profile_record.h"

namespace inspect {
namespace {

// The calendar texts of the profile lines at the input's start: the clock
// is recovered from them before the first record is decoded.
std::vector<timed_text> first_texts(std::string_view start, std::vector<std::string>& kept) {
  chunk_buffer buffer(memory_source(start), line_reader::kept_bytes, "", nullptr);
  line_reader lines(buffer);
  std::vector<timed_text> texts;
  text_line line;
  input_record record;
  std::string fault;
  while (lines.next(line)) {
    if (!line.ended || !line.text.starts_with(profile_line_start)) continue;
    if (!parse_profile_line(line.text, record, fault) || !record.calendar_text) continue;
    kept.emplace_back(*record.calendar_text);
    texts.push_back({zol::profile_record(record.bytes.data()).timestamp(), {}, line.number});
  }
  for (std::size_t i = 0; i < texts.size(); ++i) texts[i].text = kept[i];
  return texts;
}

}  // namespace

std::optional<opened_input> open_stream(std::unique_ptr<byte_source> source,
                                        const stream_options& options, std::FILE* messages) {
  input_settings settings;
  settings.form = options.form;
  if (options.progress && isatty(fileno(messages))) settings.progress = messages;
  input_fault fault;
  std::optional<opened_input> input = open_input(std::move(source), options.input, settings, fault);
  if (!input) std::fprintf(messages, "%s\n", fault_line(fault).c_str());
  return input;
}

int for_each_record(std::unique_ptr<byte_source> source, const stream_options& options,
                    std::FILE* messages, const std::function<void(const stream_record&)>& each) {
  std::optional<opened_input> input = open_stream(std::move(source), options, messages);
  if (!input) return 2;
  return for_each_record(std::move(*input), options, messages, each);
}

int for_each_record(opened_input opened, const stream_options& options, std::FILE* messages,
                    const std::function<void(const stream_record&)>& each) {
  std::optional<opened_input> input(std::move(opened));
  const input_form form = input->form;
  const zone_rules* zone = zone_named(options.zone);
  if (zone == nullptr) {
    std::fprintf(messages, "%s\n",
                 fault_line({options.input, "", unknown_zone_text(options.zone)}).c_str());
    return 2;
  }

  zol::no_clock none;
  std::optional<zol::fixed_clock> fixed;
  std::optional<clock_follower> follower;
  if (options.timesync) {
    fixed.emplace(*options.timesync);
  } else if (form == input_form::harvest) {
    std::vector<std::string> kept;
    follower.emplace(options.years, *zone, first_texts(input->buffer->data(), kept));
  }

  damage_log damage(options.input, messages);
  const std::unique_ptr<record_reader> records = read_records(std::move(*input), damage);
  input_record record;
  std::uint64_t ordinal = 0;
  std::string note;
  while (records->next(record)) {
    zol::clock_source* clock = &none;
    if (fixed) {
      clock = &*fixed;
    } else if (follower) {
      if (!follower->next_record(zol::profile_record(record.bytes.data()).timestamp(),
                                 record.calendar_text, record.line, note))
        damage.add({.kind = problem_kind::calendar_follows_pair_before, .line = record.line, .reason = note});
      clock = &*follower;
    }
    each({record, ordinal++, *clock, *zone});
  }
  damage.finish();
  if (!records->found_form()) {
    std::fprintf(messages, "%s\n",
                 fault_line({options.input, "",
                             form == input_form::harvest ? "not a capture: no harvest line in it"
                                                         : "no \"prof-event \" line in it"})
                     .c_str());
    return 2;
  }
  return damage.lost() ? 1 : 0;
}

}  // namespace inspect
