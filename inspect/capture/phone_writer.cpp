#include "inspect/capture/phone_writer.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <map>

#include "quandor/layouts/harvest_requests.h"
#include "liblog_zol/digit_tables.h"

namespace inspect {
namespace {

using json = nlohmann::ordered_json;

// The entries a harvest asks, each answering one or more kinds of call.
enum class entry { button, lyn, btmspk, events, profiler, hid, count };

entry entry_of(request about) {
  switch (about) {
    case request::lyn_state: return entry::lyn;
    case request::btmspk_state: return entry::btmspk;
    case request::profile_events: return entry::events;
    case request::profiler_log: return entry::profiler;
    case request::hid_device:
    case request::hid_report: return entry::hid;
    default: return entry::button;
  }
}

// The names the entries stand under in a description; "" for the HID device.
constexpr std::string_view entry_names[] = {"ZOL_zol-button", "ZOL_lyn", "ZOL_btmspk",
                                            "ZOL_profile", "ZOL_profiler", ""};

std::string entry_name(entry which) { return std::string(entry_names[static_cast<std::size_t>(which)]); }

// The key a call's answers are listed under: a command, a selector or a
// report id.
std::string answer_key(const device_call& call) {
  switch (call.about) {
    case request::stats: return "215";
    case request::lyn_state:
    case request::btmspk_state:
    case request::button_counts: return "208";
    case request::button_enables:
    case request::profile_events: return "209";
    case request::profiler_log: return "9";
    case request::assets: return "216";
    default: return std::to_string(call.report_id);
  }
}

bool service_wide(call_outcome outcome) {
  return outcome != call_outcome::reply && outcome != call_outcome::refused;
}

std::string hex_result(std::uint32_t value) {
  char digits[9];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  return "0x" + std::string(digits, end);
}

// Reply bytes in hex, a blank between profile records for the reader.
void append_hex(std::string& text, const std::vector<std::uint8_t>& bytes, std::size_t group) {
  const std::size_t start = text.size();
  text.resize(start + bytes.size() * 2 + (bytes.empty() ? 0 : (bytes.size() - 1) / group));
  char* out = text.data() + start;
  for (std::size_t first = 0; first < bytes.size(); first += group) {
    if (first != 0) *out++ = ' ';
    for (std::size_t i = first; i < std::min(bytes.size(), first + group); ++i, out += 2)
      std::memcpy(out, &zol::hex_pairs[2 * std::size_t{bytes[i]}], 2);
  }
}

// Replies stand in the JSON as markers, put in place after it is written:
// the JSON library would look at every digit of a log's megabytes.
constexpr std::string_view reply_marker = "#reply ";

struct entry_state {
  const device_call* wide = nullptr;     // the service-wide outcome, if any
  const device_call* per_call = nullptr; // a call that reached the service
  std::map<std::string, json> answers;   // by key, in call order
  std::vector<std::string> key_order;
};

json answer_of(const device_call& call, std::vector<const device_call*>& replies) {
  if (call.outcome == call_outcome::refused) return json{{"result", hex_result(call.value)}};
  replies.push_back(&call);
  return json{{"reply", std::string(reply_marker) + std::to_string(replies.size() - 1)}};
}

// The JSON text with each reply's hex in place of its marker.
std::string with_replies(const std::string& text, const std::vector<const device_call*>& replies) {
  std::size_t size = text.size();
  for (const device_call* call : replies) size += call->reply.size() * 3;
  std::string out;
  out.reserve(size);
  std::size_t at = 0;
  for (std::size_t marker; (marker = text.find(reply_marker, at)) != std::string::npos;) {
    out.append(text, at, marker - at);
    std::size_t index = 0;
    const char* digits = text.data() + marker + reply_marker.size();
    const auto [end, error] = std::from_chars(digits, text.data() + text.size(), index);
    const device_call& call = *replies.at(index);
    const bool log = call.about == request::profile_events || call.about == request::profiler_log;
    append_hex(out, call.reply, log ? 48 : call.reply.size() + 1);
    at = static_cast<std::size_t>(end - text.data());
  }
  out.append(text, at);
  return out;
}

json answers_of(const json& list) {
  return list.size() == 1 ? list[0] : list;
}

json commands_of(const entry_state& state) {
  json commands = json::object();
  for (const std::string& key : state.key_order) commands[key] = answers_of(state.answers.at(key));
  return commands;
}

// open_result and null_connection as a service-wide outcome gives them.
void add_open(json& service, const entry_state& state) {
  if (state.wide == nullptr) return;
  if (state.wide->outcome == call_outcome::open_failed) service["open_result"] = hex_result(state.wide->value);
  if (state.wide->outcome == call_outcome::zero_connection) service["null_connection"] = true;
}

bool missing(const entry_state& state) {
  return state.wide != nullptr && state.wide->outcome == call_outcome::missing;
}

}  // namespace

bool write_phone(const capture_model& model, std::string& text, phone_fault& fault) {
  std::array<entry_state, static_cast<std::size_t>(entry::count)> states;
  std::vector<const device_call*> replies;
  for (const harvest_model& harvest : model.harvests) {
    for (const device_call& call : harvest.calls) {
      entry_state& state = states[static_cast<std::size_t>(entry_of(call.about))];
      const bool device_step = call.about == request::hid_device;
      if (service_wide(call.outcome)) {
        if ((state.wide != nullptr && (state.wide->outcome != call.outcome || state.wide->value != call.value)) ||
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
      const std::string key = answer_key(call);
      auto [found, added] = state.answers.try_emplace(key, json::array());
      if (added) state.key_order.push_back(key);
      found->second.push_back(answer_of(call, replies));
    }
  }

  json services = json::array();
  const auto one_shot = [&](entry which) {
    const entry_state& state = states[static_cast<std::size_t>(which)];
    if (missing(state) || (state.wide == nullptr && state.per_call == nullptr)) return;
    json service{{"name", entry_name(which)}};
    add_open(service, state);
    if (!state.key_order.empty()) service["commands"] = commands_of(state);
    services.push_back(std::move(service));
  };
  one_shot(entry::button);
  one_shot(entry::lyn);
  one_shot(entry::btmspk);

  // One entry serves both readers: the events by its name through the
  // interface class, the profiler through its client child. Without the
  // events it takes another class, so that only the profiler finds it.
  const entry_state& events = states[static_cast<std::size_t>(entry::events)];
  const entry_state& profiler = states[static_cast<std::size_t>(entry::profiler)];
  if (events.wide != nullptr || events.per_call != nullptr || profiler.wide != nullptr ||
      profiler.per_call != nullptr) {
    json service{{"name", entry_name(entry::events)}};
    if (missing(events)) service["class"] = "CorvelTMXProfiler";
    add_open(service, events);
    if (!events.key_order.empty()) service["commands"] = commands_of(events);
    if (!(profiler.wide != nullptr && profiler.wide->outcome == call_outcome::no_child)) {
      json child{{"name", entry_name(entry::profiler)}};
      add_open(child, profiler);
      if (!profiler.key_order.empty()) child["methods"] = commands_of(profiler);
      service["children"] = json::array({std::move(child)});
    }
    services.push_back(std::move(service));
  }

  if (model.timesync) {
    services.push_back({{"name", "CorvelTMXTimesync"},
                        {"class", "CorvelTMXTimesync"},
                        {"properties",
                         {{"timesync", {{"tmx", model.timesync->tmx}, {"calendar", model.timesync->calendar}}}}}});
  }

  json description{{"services", std::move(services)}};
  const entry_state& hid = states[static_cast<std::size_t>(entry::hid)];
  if (!missing(hid) && (hid.wide != nullptr || hid.per_call != nullptr)) {
    json device{{"usage_page", 0xFF00}, {"usage", 0x20}};
    if (hid.wide != nullptr && hid.wide->outcome == call_outcome::not_created) device["create"] = false;
    if (hid.wide != nullptr && hid.wide->outcome == call_outcome::open_failed)
      device["open_result"] = hex_result(hid.wide->value);
    if (!hid.key_order.empty()) device["reports"] = commands_of(hid);
    description["hid_devices"] = json::array({std::move(device)});
  }
  text = with_replies(description.dump(2), replies);
  text += '\n';
  return true;
}

bool harvest_asks(std::string_view name, std::string_view key) {
  constexpr request asked[] = {request::stats,          request::lyn_state,      request::btmspk_state,
                               request::button_counts,  request::button_enables, request::profile_events,
                               request::profiler_log,   request::assets};
  for (request about : asked) {
    device_call call;
    call.about = about;
    if (entry_names[static_cast<std::size_t>(entry_of(about))] == name && answer_key(call) == key) return true;
  }
  for (const layouts::harvest_request& report : layouts::step_requests(layouts::harvest_step::hid_reports).subspan(1))
    if (name.empty() && std::to_string(report.command) == key) return true;
  return false;
}

}  // namespace inspect
