#include "inspect/views/summary_view.h"

#include <cstdio>

#include "inspect/capture/failure_meaning.h"
#include "inspect/views/text_format.h"
#include "inspect/views/json_text.h"

namespace inspect::views {
namespace {

constexpr std::size_t listed_at_most = 10;  // gaps and repeats in the text

const press_step* find_step(const press_chain& chain, step_kind kind, unsigned click) {
  for (const press_step& s : chain.steps)
    if (s.kind == kind && s.click == click) return &s;
  return nullptr;
}

struct click_column {
  step_kind kind;
  std::string_view title;  // text
  std::string_view key;    // JSON
};

constexpr click_column click_columns[] = {
    {step_kind::finger_to_down, "finger on → down", "finger_to_down_us"},
    {step_kind::down_to_asset, "down → asset", "down_to_asset_us"},
    {step_kind::held, "held", "held_us"},
    {step_kind::up_to_asset, "up → asset", "up_to_asset_us"},
};

std::int64_t since(std::uint64_t time, std::uint64_t origin) {
  return static_cast<std::int64_t>(time - origin);
}

// Pads UTF-8 text to `width` characters (not bytes).
std::string padded(std::string_view text, std::size_t width) {
  std::size_t characters = 0;
  for (const char c : text)
    if ((static_cast<unsigned char>(c) & 0xc0) != 0x80) ++characters;
  std::string result(text);
  if (characters < width) result.append(width - characters, ' ');
  return result;
}

class text_summary {
 public:
  text_summary(const capture_facts& facts, std::string& out) : facts_(facts), out_(out) {}

  void write(std::string_view input) {
    out_ += "kelvra-inspect summary of ";
    out_ += input == "-" ? "standard input" : input;
    append_format(out_, " (harvest %zu of %zu)\n", facts_.harvest_index + 1, facts_.harvest_count);
    press();
    records();
    sequences();
    failures();
    missing();
  }

 private:
  void press() {
    out_ += "\npress (statistics record)\n";
    if (!facts_.press) {
      out_ += "  none: the capture has no statistics record\n";
      return;
    }
    const press_chain& chain = *facts_.press;
    const press_stats& s = chain.stats;
    const std::optional<std::string> calendar = calendar_of(facts_, s.finger_on);
    append_format(out_, "  finger on       %s (coprocessor %llu µs)\n",
        calendar ? calendar->c_str() : "calendar time unknown",
        static_cast<unsigned long long>(s.finger_on));
    append_format(out_, "  clicks          %llu\n", static_cast<unsigned long long>(s.click_count));
    if (chain.clicks > 0) {
      out_ += "  " + padded("", 16);
      for (const click_column& c : click_columns) out_ += padded(c.title, 18);
      out_ += "\n";
    }
    for (unsigned k = 0; k < chain.clicks; ++k) {
      out_ += "  " + padded("click " + std::to_string(k + 1), 16);
      for (const click_column& c : click_columns) {
        const press_step* step = find_step(chain, c.kind, k);
        out_ += padded(step ? std::to_string(chain.duration(*step)) + " µs" : "-", 18);
      }
      out_ += "\n";
    }
    if (s.finger_off >= s.finger_on && s.finger_off != 0 && s.finger_on != 0)
      append_format(out_, "  finger off      %s ms after finger on\n",
          milliseconds_text(since(s.finger_off, s.finger_on)).c_str());
    append_format(out_, "  scans           %llu Gorvin, %llu Lumet; second scan %s ms after finger on\n",
        static_cast<unsigned long long>(s.gorvin_scans),
        static_cast<unsigned long long>(s.lumet_scans),
        milliseconds_text(static_cast<std::int64_t>(s.second_scan - s.finger_on)).c_str());

    checks(chain);
  }

  void checks(const press_chain& chain) {
    append_format(out_, "\nchecked against the checkpoint records (agreeing within %llu µs)\n",
        static_cast<unsigned long long>(checkpoint_tolerance_us));
    for (const press_point& p : chain.points) {
      if (!p.checkpoint || !chain.checked) continue;
      out_ += "  " + padded(p.label, 20) + padded(checkpoint_label(*p.checkpoint), 24);
      if (p.match)
        append_format(out_, "%-10s line %llu\n", signed_micro_text(p.match->offset).c_str(),
            static_cast<unsigned long long>(facts_.records[p.match->record].line));
      else
        out_ += "no record\n";
    }
    for (const press_step& s : chain.steps) {
      const press_point& from = chain.points[s.from];
      const press_point& to = chain.points[s.to];
      if (!from.match || !to.match || s.kind == step_kind::held) continue;
      const std::int64_t by_checkpoints = since(to.match->timestamp, from.match->timestamp);
      out_ += "  " + padded(s.label, 32);
      append_format(out_, "record %llu µs, checkpoints %lld µs\n",
          static_cast<unsigned long long>(chain.duration(s)),
          static_cast<long long>(by_checkpoints));
    }
    for (const std::string& n : chain.notes) out_ += "  note: " + n + "\n";
    if (!chain.checked) {
      out_ += "  not checked\n";
    } else if (chain.disagreements.empty()) {
      out_ += "  the statistics record and the checkpoint records agree\n";
    } else {
      for (const std::string& d : chain.disagreements) out_ += "  DISAGREES: " + d + "\n";
    }
  }

  void records() {
    append_format(out_, "\nrecords: %zu", facts_.records.size());
    if (facts_.records.empty()) {
      out_ += "\n";
      return;
    }
    const std::uint64_t first = *facts_.first_record;
    std::uint64_t last = first;
    for (const category_count& c : facts_.categories) last = std::max(last, c.span.last);
    append_format(out_, " over %s ms, from coprocessor %llu µs", milliseconds_text(since(last, first)).c_str(),
        static_cast<unsigned long long>(first));
    if (auto calendar = calendar_of(facts_, first)) out_ += " (" + *calendar + ")";
    out_ += "\n";
    append_format(out_, "  %-14s %8s %14s %14s %12s\n", "category", "records", "first ms", "last ms",
        "span ms");
    for (const category_count& c : facts_.categories)
      span_line(c.name, c.span, first);
    if (!facts_.sources.empty()) {
      append_format(out_, "  %-14s\n", "by source");
      for (const source_count& s : facts_.sources)
        span_line(std::string(source_name(s.source)), s.span, first);
    } else {
      out_ += "  the capture does not say which source each record came from\n";
    }
  }

  void span_line(const std::string& name, const time_span& span, std::uint64_t first) {
    out_ += "  " + padded(name, 14);
    append_format(out_, " %8zu %14s %14s %12s\n", span.count,
        milliseconds_text(since(span.first, first)).c_str(),
        milliseconds_text(since(span.last, first)).c_str(),
        milliseconds_text(since(span.last, span.first)).c_str());
  }

  void sequences() {
    if (facts_.runs.empty()) return;
    out_ += "\nsequence numbers\n";
    for (std::size_t i = 0; i < facts_.runs.size(); ++i) {
      const sequence_run& run = facts_.runs[i];
      append_format(out_, "  run %zu from line %llu", i + 1, static_cast<unsigned long long>(run.first_line));
      if (run.source != record_source::unknown)
        out_ += " (" + std::string(source_name(run.source)) + ")";
      append_format(out_, ": %zu records, numbers %u to %u", run.records, run.lowest, run.highest);
      if (run.lost == 0 && run.repeats.empty() && run.out_of_order == 0) {
        out_ += ", none lost or repeated\n";
        continue;
      }
      append_format(out_, "; %llu lost, %zu repeated, %zu out of order\n",
          static_cast<unsigned long long>(run.lost), run.repeats.size(), run.out_of_order);
      for (std::size_t g = 0; g < run.gaps.size() && g < listed_at_most; ++g)
        append_format(out_, "    lost %llu after %llu\n",
            static_cast<unsigned long long>(run.gaps[g].missing),
            static_cast<unsigned long long>(run.gaps[g].after));
      if (run.gaps.size() > listed_at_most)
        append_format(out_, "    and %zu gaps more\n", run.gaps.size() - listed_at_most);
      for (std::size_t r = 0; r < run.repeats.size() && r < listed_at_most; ++r)
        append_format(out_, "    %u again at line %llu%s\n", run.repeats[r].sequence,
            static_cast<unsigned long long>(run.repeats[r].line),
            run.repeats[r].same_bytes ? " (the same record)" : " (a different record)");
      if (run.repeats.size() > listed_at_most)
        append_format(out_, "    and %zu repeats more\n", run.repeats.size() - listed_at_most);
    }
    if (facts_.runs.size() > 1 && facts_.sources.empty())
      out_ += "  (numbering restarts where the second source begins, or where records were "
              "lost in bulk)\n";
  }

  void failures() {
    const auto& list = facts_.harvest->failures;
    append_format(out_, "\nfailure lines: %zu\n", list.size());
    for (const failure_line& f : list) {
      append_format(out_, "  line %llu: ", static_cast<unsigned long long>(f.line));
      out_ += f.text + "\n    " + failure_meaning(f) + "\n";
    }
  }

  void missing() {
    if (facts_.missing.empty()) return;
    out_ += "\nmissing\n";
    for (const std::string& m : facts_.missing) out_ += "  " + m + "\n";
  }

  const capture_facts& facts_;
  std::string& out_;
};

void span_json(json_writer& json, const time_span& span) {
  json.key("count").value(std::uint64_t{span.count});
  json.key("first_us").value(span.first);
  json.key("last_us").value(span.last);
  json.key("span_us").value(span.last - span.first);
}

void press_json(json_writer& json, const capture_facts& facts) {
  json.key("press");
  if (!facts.press) {
    json.null();
    return;
  }
  const press_chain& chain = *facts.press;
  const press_stats& s = chain.stats;
  json.begin_object();
  json.key("click_count").value(s.click_count);
  json.key("finger_on_us").value(s.finger_on);
  json.key("finger_on_calendar_time");
  if (auto calendar = calendar_of(facts, s.finger_on))
    json.value(*calendar);
  else
    json.null();
  json.key("finger_off_us").value(s.finger_off);
  json.key("start_haptics_us").value(s.start_haptics);
  json.key("second_scan_us").value(s.second_scan);
  json.key("gorvin_scans").value(s.gorvin_scans);
  json.key("lumet_scans").value(s.lumet_scans);
  json.key("clicks").begin_array();
  for (unsigned k = 0; k < chain.clicks; ++k) {
    json.begin_object();
    json.key("click").value(k + 1);
    for (const click_column& c : click_columns) {
      json.key(c.key);
      if (const press_step* step = find_step(chain, c.kind, k))
        json.value(chain.duration(*step));
      else
        json.null();
    }
    json.end_object();
  }
  json.end_array();
  json.key("checkpoint_tolerance_us").value(checkpoint_tolerance_us);
  json.key("checks").begin_array();
  for (const press_point& p : chain.points) {
    if (!p.checkpoint) continue;
    json.begin_object();
    json.key("point").value(p.label);
    json.key("time_us").value(p.time);
    json.key("checkpoint").value(checkpoint_label(*p.checkpoint));
    if (p.match) {
      json.key("checkpoint_us").value(p.match->timestamp);
      json.key("offset_us").value(p.match->offset);
      json.key("line").value(facts.records[p.match->record].line);
    } else {
      json.key("checkpoint_us").null();
      json.key("offset_us").null();
      json.key("line").null();
    }
    json.end_object();
  }
  json.end_array();
  json.key("steps").begin_array();
  for (const press_step& step : chain.steps) {
    const press_point& from = chain.points[step.from];
    const press_point& to = chain.points[step.to];
    json.begin_object();
    json.key("step").value(step.label);
    json.key("click").value(step.click + 1);
    json.key("latency_us").value(chain.duration(step));
    json.key("record_latency_us");
    if (step.latency_field)
      json.value(*step.latency_field);
    else
      json.null();
    json.key("checkpoint_latency_us");
    if (from.match && to.match)
      json.value(since(to.match->timestamp, from.match->timestamp));
    else
      json.null();
    json.end_object();
  }
  json.end_array();
  json.key("agree");
  if (chain.checked)
    json.value(chain.disagreements.empty());
  else
    json.null();
  json.key("disagreements").begin_array();
  for (const std::string& d : chain.disagreements) json.value(d);
  json.end_array();
  json.key("notes").begin_array();
  for (const std::string& n : chain.notes) json.value(n);
  json.end_array();
  json.end_object();
}

void records_json(json_writer& json, const capture_facts& facts) {
  json.key("records").begin_object();
  time_span all;
  for (const category_count& c : facts.categories) {
    if (c.span.count == 0) continue;
    all.add(c.span.first);
    all.add(c.span.last);
  }
  json.key("count").value(std::uint64_t{facts.records.size()});
  if (!facts.records.empty()) {
    json.key("first_us").value(all.first);
    json.key("last_us").value(all.last);
    json.key("span_us").value(all.last - all.first);
    json.key("first_calendar_time");
    if (auto calendar = calendar_of(facts, all.first))
      json.value(*calendar);
    else
      json.null();
  }
  json.key("categories").begin_array();
  for (const category_count& c : facts.categories) {
    json.begin_object();
    json.key("category_id").value(c.category);
    json.key("category").value(c.name);
    span_json(json, c.span);
    json.end_object();
  }
  json.end_array();
  json.key("sources");
  if (facts.sources.empty()) {
    json.null();
  } else {
    json.begin_array();
    for (const source_count& s : facts.sources) {
      json.begin_object();
      json.key("source").value(source_name(s.source));
      span_json(json, s.span);
      json.end_object();
    }
    json.end_array();
  }
  json.key("sequence_runs").begin_array();
  for (const sequence_run& run : facts.runs) {
    json.begin_object();
    json.key("source");
    if (run.source == record_source::unknown)
      json.null();
    else
      json.value(source_name(run.source));
    json.key("first_line").value(run.first_line);
    json.key("records").value(std::uint64_t{run.records});
    json.key("lowest").value(run.lowest);
    json.key("highest").value(run.highest);
    json.key("lost").value(run.lost);
    json.key("out_of_order").value(std::uint64_t{run.out_of_order});
    json.key("gaps").begin_array();
    for (const sequence_gap& g : run.gaps) {
      json.begin_object();
      json.key("after").value(g.after);
      json.key("missing").value(g.missing);
      json.end_object();
    }
    json.end_array();
    json.key("repeats").begin_array();
    for (const sequence_repeat& r : run.repeats) {
      json.begin_object();
      json.key("sequence_num").value(r.sequence);
      json.key("line").value(r.line);
      json.key("same_record").value(r.same_bytes);
      json.end_object();
    }
    json.end_array();
    json.end_object();
  }
  json.end_array();
  json.end_object();
}

void failures_json(json_writer& json, const capture_facts& facts) {
  json.key("failures").begin_array();
  for (const failure_line& f : facts.harvest->failures) {
    json.begin_object();
    json.key("line").value(f.line);
    json.key("request").value(request_label(f));
    json.key("kind").value(kind_key(f.kind));
    json.key("value").value(f.value);
    json.key("error_text").value(f.error_text);
    json.key("text").value(f.text);
    json.key("meaning").value(failure_meaning(f));
    json.end_object();
  }
  json.end_array();
}

}  // namespace

std::string milliseconds_text(std::int64_t microseconds) {
  const std::uint64_t magnitude = microseconds < 0 ? 0 - static_cast<std::uint64_t>(microseconds)
                                                   : static_cast<std::uint64_t>(microseconds);
  char text[32];
  std::snprintf(text, sizeof text, "%s%llu.%03llu", microseconds < 0 ? "-" : "",
                static_cast<unsigned long long>(magnitude / 1000),
                static_cast<unsigned long long>(magnitude % 1000));
  return text;
}

void write_summary_text(const capture_facts& facts, std::string_view input, std::string& out) {
  text_summary(facts, out).write(input);
}

void write_summary_json(const capture_facts& facts, std::string_view input, std::string& out) {
  json_writer json(out);
  json.begin_object();
  json.key("schema_version").value(std::uint64_t{1});
  json.key("input").value(input);
  json.key("harvest").value(std::uint64_t{facts.harvest_index + 1});
  json.key("harvests").value(std::uint64_t{facts.harvest_count});
  press_json(json, facts);
  records_json(json, facts);
  failures_json(json, facts);
  json.key("missing").begin_array();
  for (const std::string& m : facts.missing) json.value(m);
  json.end_array();
  json.end_object();
}

}  // namespace inspect::views
