#include "inspect/outputs/phone_writer.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "inspect/capture/number_text.h"
#include "inspect/outputs/json_writer.h"
#include "liblog_zol/ZOLProfile.h"
#include "liblog_zol/digit_tables.h"

namespace inspect {
namespace {

using layouts::harvest_request;
using layouts::request_row;

// What the capture shows of one description entry: how it opens, and its
// answers by key in call order.
struct entry_state {
  const device_call* wide = nullptr;      // a service-wide outcome, if any
  const device_call* per_call = nullptr;  // a call that reached the service
  std::vector<std::string> keys;          // in call order
  std::map<std::string, std::vector<const device_call*>> answers;
};

bool service_wide(call_outcome outcome) {
  return outcome != call_outcome::reply && outcome != call_outcome::refused;
}

bool missing(const entry_state& state) {
  return state.wide != nullptr && state.wide->outcome == call_outcome::missing;
}

bool seen(const entry_state& state) { return state.wide != nullptr || state.per_call != nullptr; }

// Reply bytes in hex, a blank between profile records for the reader.
std::string reply_hex(const device_call& call) {
  const bool log = call.about == request::profile_events || call.about == request::profiler_log;
  const std::size_t group = log ? profile_record_size : call.reply.size() + 1;
  const std::vector<std::uint8_t>& bytes = call.reply;
  std::string text(bytes.size() * 2 + (bytes.empty() ? 0 : (bytes.size() - 1) / group) + 2, '"');
  char* out = text.data() + 1;
  for (std::size_t first = 0; first < bytes.size(); first += group) {
    if (first != 0) *out++ = ' ';
    for (std::size_t i = first; i < std::min(bytes.size(), first + group); ++i, out += 2)
      std::memcpy(out, &zol::hex_pairs[2 * std::size_t{bytes[i]}], 2);
  }
  return text;
}

void answer(json_writer& json, const device_call& call) {
  json.begin_object();
  if (call.outcome == call_outcome::refused)
    json.key("result").value(hex_text(call.value));
  else
    json.key("reply").raw(reply_hex(call));
  json.end_object();
}

// "commands", "methods" or "reports": each key's answers, a list when the
// harvest asked more than once.
void answers(json_writer& json, std::string_view key, const entry_state& state) {
  if (state.keys.empty()) return;
  json.key(key).begin_object();
  for (const std::string& name : state.keys) {
    const std::vector<const device_call*>& list = state.answers.at(name);
    json.key(name);
    if (list.size() == 1) {
      answer(json, *list.front());
      continue;
    }
    json.begin_array();
    for (const device_call* call : list) answer(json, *call);
    json.end_array();
  }
  json.end_object();
}

// open_result and null_connection as a service-wide outcome gives them.
void opening(json_writer& json, const entry_state& state) {
  if (state.wide == nullptr) return;
  if (state.wide->outcome == call_outcome::open_failed)
    json.key("open_result").value(hex_text(state.wide->value));
  if (state.wide->outcome == call_outcome::zero_connection) json.key("null_connection").value(true);
}

// The first place where no phone prints what the capture shows.
bool printable(const capture_model& model, bool partial, phone_fault& fault,
               std::vector<std::string>& assumed) {
  for (const problem& d : model.damage) {
    if (!loses_input(d)) continue;
    if (!partial) {
      fault = {d.line, problem_text(d) + " (with --partial, the phone of the readable part)"};
      return false;
    }
    assumed.push_back(d.where() + ": " + problem_text(d) + ": left out of the phone");
  }
  if (!model.pair_given && !model.clock.one_pair()) {
    const recovered_clock& clock = model.clock;
    std::uint64_t line = clock.unreadable.empty() ? 0 : clock.unreadable.front();
    for (std::size_t i = 0; i < clock.segments.size(); ++i)
      if (i != clock.main && (line == 0 || clock.segments[i].first_line < line))
        line = clock.segments[i].first_line;
    if (!partial) {
      fault = {line, "calendar-time does not follow from the clock pair of the others (a phone has "
                     "one pair)"};
      return false;
    }
    assumed.push_back("line " + std::to_string(line) +
                      ": the phone has the clock pair of the most calendar times; other lines' "
                      "times will differ");
  }
  for (const harvest_model& harvest : model.harvests) {
    for (const failure_line& f : harvest.failures) {
      if (f.about != request::hid_device ||
          (f.source_line != layouts::hid_no_pairs.line && f.source_line != layouts::hid_no_matching.line))
        continue;
      if (!partial) {
        fault = {f.line, "a phone description cannot make the HID matching fail"};
        return false;
      }
      assumed.push_back("line " + std::to_string(f.line) +
                        ": the phone has no HID device in place of a failed matching");
    }
  }
  return true;
}

}  // namespace

bool write_phone(const capture_model& model, bool partial, std::string& text, phone_fault& fault,
                 std::vector<std::string>& assumed) {
  if (!printable(model, partial, fault, assumed)) return false;
  // One state an entry, in the order the requests name them.
  std::map<std::string_view, entry_state> states;
  for (const harvest_model& harvest : model.harvests) {
    for (const device_call& call : harvest.calls) {
      const harvest_request& row = request_row(call.about);
      entry_state& state = states[row.phone_entry];
      const bool device_step = call.about == request::hid_device;
      if (service_wide(call.outcome)) {
        if ((state.wide != nullptr &&
             (state.wide->outcome != call.outcome || state.wide->value != call.value)) ||
            state.per_call != nullptr) {
          fault = {call.line, "one phone cannot answer so: the service answered otherwise at line " +
                                  std::to_string(state.wide ? state.wide->line : state.per_call->line)};
          return false;
        }
        state.wide = &call;
        continue;
      }
      if (state.wide != nullptr) {
        fault = {call.line, "one phone cannot answer so: the service failed as a whole at line " +
                                std::to_string(state.wide->line)};
        return false;
      }
      state.per_call = &call;
      if (device_step) continue;
      const std::string key = std::to_string(row.command);
      auto [found, added] = state.answers.try_emplace(key);
      if (added) state.keys.push_back(key);
      found->second.push_back(&call);
    }
  }
  const auto state_of = [&](request about) -> const entry_state& {
    static const entry_state none;
    const auto found = states.find(request_row(about).phone_entry);
    return found == states.end() ? none : found->second;
  };

  text.clear();
  json_writer json(text, true);
  json.begin_object();
  json.key("services").begin_array();
  for (const request about : {request::stats, request::lyn_state, request::btmspk_state}) {
    const entry_state& state = state_of(about);
    if (missing(state) || !seen(state)) continue;
    json.begin_object();
    json.key("name").value(request_row(about).phone_entry);
    opening(json, state);
    answers(json, "commands", state);
    json.end_object();
  }

  // One entry serves both readers: the events by its name through the
  // interface class, the profiler through its client child. Without the
  // events it takes another class, so that only the profiler finds it.
  const entry_state& events = state_of(request::profile_events);
  const entry_state& profiler = state_of(request::profiler_log);
  if (seen(events) || seen(profiler)) {
    json.begin_object();
    json.key("name").value(request_row(request::profile_events).phone_entry);
    if (missing(events)) json.key("class").value("CorvelTMXProfiler");
    opening(json, events);
    answers(json, "commands", events);
    if (!(profiler.wide != nullptr && profiler.wide->outcome == call_outcome::no_child)) {
      json.key("children").begin_array().begin_object();
      json.key("name").value(request_row(request::profiler_log).phone_entry);
      opening(json, profiler);
      answers(json, "methods", profiler);
      json.end_object().end_array();
    }
    json.end_object();
  }

  if (model.pair) {
    json.begin_object();
    json.key("name").value("CorvelTMXTimesync");
    json.key("class").value("CorvelTMXTimesync");
    json.key("properties").begin_object().key("timesync").begin_object();
    json.key("tmx").value(std::int64_t{model.pair->tmx});
    json.key("calendar").value(std::int64_t{model.pair->calendar});
    json.end_object().end_object().end_object();
  }
  json.end_array();

  const entry_state& hid = state_of(request::hid_device);
  const bool matching_failed = std::any_of(model.harvests.begin(), model.harvests.end(), [](const harvest_model& h) {
    return std::any_of(h.failures.begin(), h.failures.end(), [](const failure_line& f) {
      return f.source_line == layouts::hid_no_pairs.line || f.source_line == layouts::hid_no_matching.line;
    });
  });
  if (!missing(hid) && seen(hid) && !matching_failed) {
    json.key("hid_devices").begin_array().begin_object();
    json.key("usage_page").value(std::uint64_t{0xFF00});
    json.key("usage").value(std::uint64_t{0x20});
    if (hid.wide != nullptr && hid.wide->outcome == call_outcome::not_created)
      json.key("create").value(false);
    if (hid.wide != nullptr && hid.wide->outcome == call_outcome::open_failed)
      json.key("open_result").value(hex_text(hid.wide->value));
    answers(json, "reports", hid);
    json.end_object().end_array();
  }
  json.end_object();
  text += '\n';
  return true;
}

bool harvest_asks(std::string_view name, std::string_view key) {
  return std::any_of(std::begin(layouts::harvest_requests), std::end(layouts::harvest_requests),
                     [&](const harvest_request& row) {
                       return row.path != layouts::request_path::hid_device &&
                              row.phone_entry == name && std::to_string(row.command) == key;
                     });
}

bool harvest_entry(std::string_view name) {
  return !name.empty() &&
         std::any_of(std::begin(layouts::harvest_requests), std::end(layouts::harvest_requests),
                     [&](const harvest_request& row) {
                       return row.phone_entry == name && row.path == layouts::request_path::one_shot;
                     });
}

}  // namespace inspect
