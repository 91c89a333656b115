#include "inspect/outputs/trace_view.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <numeric>

#include "inspect/capture/failure_meaning.h"
#include "inspect/outputs/json_facts.h"
#include "inspect/outputs/json_writer.h"
#include "inspect/outputs/trace_tracks.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/clock_source.h"
#include "liblog_zol/json_printer.h"
#include "liblog_zol/name_tables.h"
#include "liblog_zol/profile_record.h"

namespace inspect {
namespace {

constexpr int press_pid = 1;
constexpr int notes_pid = 2;
constexpr int off_axis_pid = 3;
constexpr int category_pid_base = 100;

int category_pid(std::uint32_t category) { return category_pid_base + static_cast<int>(category); }
int component_tid(std::uint32_t component) { return static_cast<int>(component) + 1; }

std::string flow_id(std::size_t n) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%zx", n + 1);
  return text;
}

class trace_builder {
 public:
  trace_builder(const capture_model& model, std::size_t harvest, std::string& out)
      : model_(model),
        harvest_(model.harvests[harvest]),
        index_(harvest),
        facts_(harvest_.facts),
        json_(out),
        origin_(facts_.earliest.value_or(0)) {
    json_.exact_in_browsers();
    printer_.set_exact_in_browsers(true);
  }

  void build() {
    plan_press();
    json_.begin_object();
    json_.key("traceEvents").begin_array();
    write_track_names();
    write_notes();
    write_press();
    write_records();
    write_off_axis();
    json_.text() += '\n';
    json_.end_array();
    json_.key("displayTimeUnit").value("ms");
    write_other_data();
    json_.key("metadata").begin_object();
    json_.key("generator").value("kelvra-inspect trace");
    json_.key("clock").value("coprocessor microseconds, from the earliest time shown");
    json_.end_object();
    json_.end_object();
  }

 private:
  struct press_event {
    std::string name;
    int tid;
    std::uint64_t from;
    std::uint64_t to;
    std::optional<std::size_t> point;  // a mark at a press point
    std::optional<std::size_t> step;   // a slice of a step
  };

  std::int64_t relative(std::uint64_t time) const {
    return static_cast<std::int64_t>(time - origin_);
  }

  void common(std::string_view name, std::string_view category, char phase, std::uint64_t time,
              int pid, int tid) {
    json_.line_break().begin_object();
    json_.key("name").value(name);
    if (!category.empty()) json_.key("cat").value(category);
    json_.key("ph").value(std::string_view(&phase, 1));
    json_.key("ts").value(relative(time));
    json_.key("pid").value(std::int64_t{pid});
    json_.key("tid").value(std::int64_t{tid});
  }

  void metadata(std::string_view kind, int pid, int tid, std::string_view key,
                const std::string& name, std::int64_t sort) {
    json_.line_break().begin_object();
    json_.key("name").value(kind);
    json_.key("ph").value("M");
    json_.key("ts").value(std::int64_t{0});
    json_.key("pid").value(std::int64_t{pid});
    json_.key("tid").value(std::int64_t{tid});
    json_.key("args").begin_object();
    if (key == "name")
      json_.key("name").value(name);
    else
      json_.key("sort_index").value(sort);
    json_.end_object().end_object();
  }

  void name_process(int pid, const std::string& name, std::int64_t sort) {
    metadata("process_name", pid, 0, "name", name, 0);
    metadata("process_sort_index", pid, 0, "sort_index", {}, sort);
  }

  void name_thread(int pid, int tid, const std::string& name, std::int64_t sort) {
    metadata("thread_name", pid, tid, "name", name, 0);
    metadata("thread_sort_index", pid, tid, "sort_index", {}, sort);
  }

  // Where each press point and step goes, before anything is written.
  void plan_press() {
    if (!facts_.press) return;
    const press_chain& chain = *facts_.press;
    for (const std::string name : {"finger", "finger → button down", "button", "haptics"})
      packer_.reserve(name);
    for (std::size_t i = 0; i < chain.points.size(); ++i) {
      const press_point& p = chain.points[i];
      if (!p.on_axis) continue;
      const std::string thread = !click_point(p.kind)  ? "finger"
                                 : asset_point(p.kind) ? "haptics"
                                                       : "button";
      press_.push_back({point_label(p), packer_.place(thread, p.time, p.time), p.time, p.time, i, {}});
    }
    // Longest first: slices that start together nest in that order.
    std::vector<std::size_t> order(chain.steps.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
      return chain.duration(chain.steps[a]) > chain.duration(chain.steps[b]);
    });
    for (const std::size_t i : order) {
      const press_step& s = chain.steps[i];
      if (!chain.points[s.from].on_axis || !chain.points[s.to].on_axis) continue;
      const std::uint64_t from = chain.points[s.from].time;
      const std::uint64_t to = chain.points[s.to].time;
      std::string thread = "haptics";
      if (s.kind == step_kind::finger_to_down) thread = "finger → button down";
      if (s.kind == step_kind::held) thread = "button";
      press_.push_back({step_label(s), packer_.place(thread, from, to), from, to, {}, i});
    }
    const auto placed = [&](std::uint64_t t) {
      return facts_.earliest && facts_.latest && t >= *facts_.earliest && t <= *facts_.latest;
    };
    if (chain.touch && placed(chain.touch->on) && placed(chain.touch->off))
      press_.push_back({"finger on the button", packer_.place("finger", chain.touch->on, chain.touch->off),
                        chain.touch->on, chain.touch->off, {}, {}});
    // Checkpoint records at the other end of a flow.
    for (std::size_t i = 0; i < chain.points.size(); ++i)
      if (chain.points[i].match) flow_of_record_[chain.points[i].match->record] = i;
  }

  void write_track_names() {
    if (facts_.press) {
      name_process(press_pid, "press (statistics record)", 0);
      for (const auto& slot : packer_.slots())
        if (!slot.spans.empty()) name_thread(press_pid, slot.tid, slot.name, slot.tid);
    }
    if (!facts_.missing.empty() || !harvest_.failures.empty() || !facts_.damage.empty())
      name_process(notes_pid, "capture notes", 1);
    if (facts_.off_axis != 0) {
      name_process(off_axis_pid, "records far from the press (their times in args)", 2);
      name_thread(off_axis_pid, 1, "off the time axis", 1);
    }
    std::int64_t rank = 10;
    std::uint32_t last_category = 0x100;
    for (const lane& l : facts_.lanes) {
      if (l.category != last_category) {
        name_process(category_pid(l.category), l.category_name, rank++);
        last_category = l.category;
      }
      name_thread(category_pid(l.category), component_tid(l.component), l.component_name,
                  component_tid(l.component));
    }
  }

  // What is missing and every failure line, at the start of the notes track.
  void write_notes() {
    for (const problem& missing : facts_.missing) {
      common("missing: " + problem_text(missing), "capture", 'i', origin_, notes_pid, 0);
      json_.key("s").value("p");
      json_.end_object();
    }
    for (const failure_line& f : harvest_.failures) {
      common("failure: " + std::string(layouts::request_row(f.about).label) + ": " +
                 std::string(kind_label(f.kind)),
             "capture", 'i', origin_, notes_pid, 0);
      json_.key("s").value("p");
      json_.key("args").begin_object();
      json_.key("line").value(f.line);
      json_.key("text").value(f.text);
      json_.key("meaning").value(f.meaning);
      json_.end_object().end_object();
    }
    for (const std::size_t i : facts_.damage) {
      const problem& d = model_.damage[i];
      common(std::string(loses_input(d) ? "damage: " : "note: ") + problem_text(d), "capture", 'i', origin_,
             notes_pid, 0);
      json_.key("s").value("p");
      json_.key("args").begin_object();
      json_.key("kind").value(kind_code(d.kind));
      json_.key("where").value(d.where());
      json_.key("outcome").value(problem_outcome(d));
      json_.end_object().end_object();
    }
  }

  void point_args(const press_point& p) {
    json_.key("args").begin_object();
    json_.key("time_us").value(p.time);
    if (auto calendar = calendar_of(model_, p.time)) json_.key("calendar_time").value(*calendar);
    if (p.checkpoint) {
      json_.key("checkpoint").value(checkpoint_label(*p.checkpoint));
      if (p.match) {
        json_.key("checkpoint_offset_us").value(p.match->offset);
        json_.key("checkpoint_line").value(facts_.records[p.match->record].line);
      } else {
        json_.key("checkpoint_offset_us").null();
      }
    }
    json_.end_object();
  }

  void step_args(const press_step& s) {
    const press_chain& chain = *facts_.press;
    const press_point& from = chain.points[s.from];
    const press_point& to = chain.points[s.to];
    json_.key("args").begin_object();
    json_.key("latency_us").value(chain.duration(s));
    if (s.latency_field) json_.key("record_latency_us").value(*s.latency_field);
    if (s.checkpoint_latency) json_.key("checkpoint_latency_us").value(*s.checkpoint_latency);
    json_.key("from").value(point_label(from));
    json_.key("to").value(point_label(to));
    json_.end_object();
  }

  void write_press() {
    if (!facts_.press) return;
    const press_chain& chain = *facts_.press;
    for (const press_event& e : press_) {
      const bool instant = e.point && !chain.points[*e.point].checkpoint;
      common(e.name, "press", instant ? 'i' : 'X', e.from, press_pid, e.tid);
      if (instant) {
        json_.key("s").value("t");
      } else {
        json_.key("dur").value(e.to - e.from);
      }
      if (e.point) {
        const press_point& p = chain.points[*e.point];
        if (p.match) {
          json_.key("bind_id").value(flow_id(*e.point));
          json_.key("flow_out").value(true);
        }
        point_args(p);
      } else if (e.step) {
        step_args(chain.steps[*e.step]);
      } else {
        json_.key("args").begin_object();
        json_.key("touch_us").value(e.to - e.from);
        json_.end_object();
      }
      json_.end_object();
    }
  }

  void write_counters(const record_row& row, const zol::profile_record& record,
                      const std::string& category) {
    const sample_axes* samples = samples_of(row);
    if (!samples) return;
    const std::string prefix = component_label(row.category(), row.component()) + " " +
                               event_label(record_bytes(harvest_, row)) + " ";
    for (std::size_t axis = 0; axis < 3 && !samples->axes[axis].empty(); ++axis) {
      const std::int32_t word = record.bytes().i32(16 + 4 * axis);
      common(prefix + std::string(samples->axes[axis]), category, 'C', row.timestamp,
             category_pid(row.category()), 0);
      json_.key("args").begin_object();
      if (samples->scale == 0)
        json_.key("value").value(std::int64_t{word});
      else
        json_.key("value").number(word * samples->scale);
      json_.end_object().end_object();
    }
  }

  void write_records() {
    std::vector<std::size_t> order(facts_.records.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
      return facts_.records[a].timestamp < facts_.records[b].timestamp;
    });
    std::map<std::uint32_t, std::string> category_names;
    for (const std::size_t i : order) {
      const record_row& row = facts_.records[i];
      if (!row.on_axis) continue;
      const std::uint8_t* bytes = record_bytes(harvest_, row);
      const zol::profile_record record(bytes);
      std::string& category = category_names[row.category()];
      if (category.empty()) category = category_label(row.category());
      common(event_label(bytes), category, 'X', row.timestamp, category_pid(row.category()),
             component_tid(row.component()));
      json_.key("dur").value(std::int64_t{0});
      if (const auto flow = flow_of_record_.find(i); flow != flow_of_record_.end()) {
        json_.key("bind_id").value(flow_id(flow->second));
        json_.key("flow_in").value(true);
      }
      record_args(row, bytes);
      json_.end_object();
      write_counters(row, record, category);
    }
  }

  // The record's own facts and its payload, as the records' JSON has them.
  void record_args(const record_row& row, const std::uint8_t* bytes) {
    decode_profile_record(printer_, bytes, no_clock_);
    json_.key("args").begin_object();
    json_.key("line").value(row.line);
    json_.key("sequence_num").value(row.sequence);
    json_.key("timestamp_us").value(row.timestamp);
    if (auto calendar = calendar_of(model_, row.timestamp)) json_.key("calendar_time").value(*calendar);
    if (row.source != record_source::unknown) json_.key("source").value(source_name(row.source));
    json_.key("type").value(zol::type_name(row.category(), row.type()).view());
    json_.key("payload").raw(printer_.payload());
    json_.end_object();
  }

  // Records too far from the press for its axis, at its origin on a track
  // of their own: a viewer opens on the press and still lists them.
  void write_off_axis() {
    for (const record_row& row : facts_.records) {
      if (row.on_axis) continue;
      const std::uint8_t* bytes = record_bytes(harvest_, row);
      common(event_label(bytes), category_label(row.category()), 'i', origin_, off_axis_pid, 1);
      json_.key("s").value("t");
      record_args(row, bytes);
      json_.end_object();
    }
  }

  void write_other_data() {
    json_.key("otherData").begin_object();
    json_.key("generator").value("kelvra-inspect trace");
    json_.key("origin_coprocessor_us");
    if (facts_.earliest)
      json_.value(*facts_.earliest);
    else
      json_.null();
    json_.key("origin_calendar_time");
    if (auto calendar = facts_.earliest ? calendar_of(model_, *facts_.earliest) : std::nullopt)
      json_.value(*calendar);
    else
      json_.null();
    json_.key("origin").value(facts_.first_record && facts_.first_record == facts_.earliest
                                  ? "the first record"
                                  : "the statistics record's earliest time");
    json_.key("schema_version").value(std::uint64_t{trace_schema_version});
    json_.key("input").value(model_.input);
    json_.key("harvest").value(std::uint64_t{index_ + 1});
    json_.key("harvests").value(std::uint64_t{model_.harvests.size()});
    json_.key("records").value(std::uint64_t{facts_.records.size()});
    json_.key("records_off_axis").value(std::uint64_t{facts_.off_axis});
    json_.key("timesync");
    write_clock(json_, model_);
    json_.key("missing");
    write_problems(json_, facts_.missing);
    if (facts_.press) {
      json_.key("press_disagreements");
      write_problems(json_, facts_.press->disagreements);
      json_.key("press_notes");
      write_problems(json_, facts_.press->notes);
    }
    json_.key("failures");
    write_failures(json_, harvest_.failures);
    json_.key("damaged").value(facts_.damaged);
    json_.key("damage");
    write_harvest_damage(json_, model_, facts_);
    json_.end_object();
  }

  const capture_model& model_;
  const harvest_model& harvest_;
  std::size_t index_;
  const harvest_facts& facts_;
  json_writer json_;
  std::uint64_t origin_;
  zol::json_printer printer_;
  zol::no_clock no_clock_;
  thread_packer packer_;
  std::vector<press_event> press_;
  std::map<std::size_t, std::size_t> flow_of_record_;  // record -> press point
};

}  // namespace

void write_trace(const capture_model& model, std::size_t harvest, std::string& out) {
  trace_builder(model, harvest, out).build();
}

}  // namespace inspect
