#include "inspect/outputs/phone_writer.h"

#include <algorithm>
#include <map>

#include "inspect/capture/number_text.h"
#include "inspect/outputs/json_tree.h"
#include "liblog_zol/ZOLProfile.h"

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

// Reply bytes, written in hex with a blank between profile records for
// the reader.
phone_description reply_bytes(const device_call& call) {
  const bool log = call.about == request::profile_events || call.about == request::profiler_log;
  return log ? phone_description::binary(call.reply, profile_record_size)
             : phone_description::binary(call.reply);
}

phone_description answer(const device_call& call) {
  phone_description item = phone_description::object();
  if (call.outcome == call_outcome::refused)
    item["result"] = hex_text(call.value);
  else
    item["reply"] = reply_bytes(call);
  return item;
}

// "commands", "methods" or "reports": each key's answers, a list when the
// harvest asked more than once.
void answers(phone_description& entry, const char* key, const entry_state& state) {
  if (state.keys.empty()) return;
  phone_description& by_key = entry[key] = phone_description::object();
  for (const std::string& name : state.keys) {
    const std::vector<const device_call*>& list = state.answers.at(name);
    if (list.size() == 1) {
      by_key[name] = answer(*list.front());
      continue;
    }
    phone_description& calls = by_key[name] = phone_description::array();
    for (const device_call* call : list) calls.push_back(answer(*call));
  }
}

// open_result and null_connection as a service-wide outcome gives them.
void opening(phone_description& entry, const entry_state& state) {
  if (state.wide == nullptr) return;
  if (state.wide->outcome == call_outcome::open_failed) entry["open_result"] = hex_text(state.wide->value);
  if (state.wide->outcome == call_outcome::zero_connection) entry["null_connection"] = true;
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

bool describe_phone(const capture_model& model, bool partial, phone_description& phone,
                    phone_fault& fault, std::vector<std::string>& assumed) {
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

  phone = phone_description::object();
  phone_description& services = phone["services"] = phone_description::array();
  for (const request about : {request::stats, request::lyn_state, request::btmspk_state}) {
    const entry_state& state = state_of(about);
    if (missing(state) || !seen(state)) continue;
    phone_description entry = {{"name", request_row(about).phone_entry}};
    opening(entry, state);
    answers(entry, "commands", state);
    services.push_back(std::move(entry));
  }

  // One entry serves both readers: the events by its name through the
  // interface class, the profiler through its client child. Without the
  // events it takes another class, so that only the profiler finds it.
  const entry_state& events = state_of(request::profile_events);
  const entry_state& profiler = state_of(request::profiler_log);
  if (seen(events) || seen(profiler)) {
    phone_description entry = {{"name", request_row(request::profile_events).phone_entry}};
    if (missing(events)) entry["class"] = "CorvelTMXProfiler";
    opening(entry, events);
    answers(entry, "commands", events);
    if (!(profiler.wide != nullptr && profiler.wide->outcome == call_outcome::no_child)) {
      phone_description child = {{"name", request_row(request::profiler_log).phone_entry}};
      opening(child, profiler);
      answers(child, "methods", profiler);
      entry["children"] = phone_description::array({std::move(child)});
    }
    services.push_back(std::move(entry));
  }

  if (model.pair) {
    phone_description entry = {{"name", "CorvelTMXTimesync"}, {"class", "CorvelTMXTimesync"}};
    entry["properties"]["timesync"] = {{"tmx", std::int64_t{model.pair->tmx}},
                                       {"calendar", std::int64_t{model.pair->calendar}}};
    services.push_back(std::move(entry));
  }

  const entry_state& hid = state_of(request::hid_device);
  const bool matching_failed = std::any_of(model.harvests.begin(), model.harvests.end(), [](const harvest_model& h) {
    return std::any_of(h.failures.begin(), h.failures.end(), [](const failure_line& f) {
      return f.source_line == layouts::hid_no_pairs.line || f.source_line == layouts::hid_no_matching.line;
    });
  });
  if (!missing(hid) && seen(hid) && !matching_failed) {
    phone_description device = {{"usage_page", std::uint64_t{0xFF00}}, {"usage", std::uint64_t{0x20}}};
    if (hid.wide != nullptr && hid.wide->outcome == call_outcome::not_created) device["create"] = false;
    if (hid.wide != nullptr && hid.wide->outcome == call_outcome::open_failed)
      device["open_result"] = hex_text(hid.wide->value);
    answers(device, "reports", hid);
    phone["hid_devices"] = phone_description::array({std::move(device)});
  }
  return true;
}

std::string phone_text(const phone_description& phone) {
  std::string text;
  json_writer json(text, true);
  write_json_tree(json, phone);
  text += '\n';
  return text;
}

bool write_phone(const capture_model& model, bool partial, std::string& text, phone_fault& fault,
                 std::vector<std::string>& assumed) {
  phone_description phone;
  if (!describe_phone(model, partial, phone, fault, assumed)) return false;
  text = phone_text(phone);
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
