#include "inspect/outputs/phone_additions.h"

#include <algorithm>
#include <initializer_list>

#include "inspect/outputs/phone_writer.h"

namespace inspect {
namespace {

using json = phone_description;

// The keys whose objects are merged key by key; any other item is taken
// whole when the phone lacks it.
constexpr std::string_view keyed_items[] = {"properties", "commands", "methods", "reports"};

bool check_entries(const json& list, const std::string& where, bool named, addition_fault& fault);

bool check_entry(const json& entry, const std::string& where, bool named, addition_fault& fault) {
  if (!entry.is_object()) {
    fault = {where, "expected an object"};
    return false;
  }
  if (named && !(entry.contains("name") && entry["name"].is_string())) {
    fault = {where, "expected a \"name\" text to match it by"};
    return false;
  }
  for (std::string_view key : keyed_items) {
    const auto found = entry.find(key);
    if (found != entry.end() && !found->is_object()) {
      fault = {where + "." + std::string(key), "expected an object"};
      return false;
    }
  }
  const auto children = entry.find("children");
  return children == entry.end() || check_entries(*children, where + ".children", true, fault);
}

bool check_entries(const json& list, const std::string& where, bool named, addition_fault& fault) {
  if (!list.is_array()) {
    fault = {where, "expected an array"};
    return false;
  }
  for (std::size_t i = 0; i < list.size(); ++i)
    if (!check_entry(list[i], where + "[" + std::to_string(i) + "]", named, fault)) return false;
  return true;
}

// What the capture decides stays as it is: the answers the harvest asks
// for, how each entry opens, and entries it looked for and found missing.
// The library's message without its "[json.exception...] " prefix.
std::string message_of(const std::exception& error) {
  std::string message = error.what();
  const std::size_t end = message.find("] ");
  if (message.starts_with("[json.exception") && end != std::string::npos) message.erase(0, end + 2);
  const std::size_t colon = message.find(": ");
  if (message.starts_with("parse error") && colon != std::string::npos) message.erase(0, colon + 2);
  return message;
}

class merger {
 public:
  explicit merger(addition_fault& fault) : fault_(fault) {}

  bool services(json& mine, const json& more) {
    for (std::size_t i = 0; i < more.size(); ++i) {
      const std::string where = "services[" + std::to_string(i) + "]";
      const std::string name = more[i]["name"];
      if (json* match = named(mine, name)) {
        if (!entry(*match, more[i], name, where)) return false;
      } else if (looked_for(mine, more[i])) {
        return refuse(where, "the harvest looks for \"" + name + "\" and the capture shows it missing");
      } else {
        mine.push_back(more[i]);
      }
    }
    return true;
  }

  bool hid_devices(json& mine, const json& more) {
    for (std::size_t i = 0; i < more.size(); ++i) {
      const std::string where = "hid_devices[" + std::to_string(i) + "]";
      if (i < mine.size()) {
        if (!entry(mine[i], more[i], "", where)) return false;
      } else if (item_is(more[i], "usage_page", button_usage_page) && item_is(more[i], "usage", button_usage)) {
        return refuse(where, "the harvest looks for the button's HID device and the capture shows it missing");
      } else {
        mine.push_back(more[i]);
      }
    }
    return true;
  }

 private:
  static constexpr int button_usage_page = 0xFF00;
  static constexpr int button_usage = 0x20;

  // Whether the entry's item `key` is `value`, whatever type it has.
  static bool item_is(const json& entry, const char* key, const json& value) {
    if (!entry.is_object()) return false;
    const auto found = entry.find(key);
    return found != entry.end() && *found == value;
  }

  static json* named(json& list, const std::string& name) {
    for (json& entry : list)
      if (item_is(entry, "name", name)) return &entry;
    return nullptr;
  }

  // Services are found by the name with or without its prefix, the clock
  // pair by its class.
  static bool looked_for(const json& mine, const json& service) {
    constexpr std::string_view prefix = "ZOL_";
    constexpr std::string_view timesync = "CorvelTMXTimesync";
    const std::string name = service["name"];
    if (harvest_entry(name)) return true;
    const std::string prefixed = std::string(prefix) + name;
    if (harvest_entry(prefixed) && !has(mine, "name", prefixed)) return true;
    return (name == timesync || item_is(service, "class", timesync)) && !has(mine, "class", timesync);
  }

  static bool has(const json& list, const char* key, std::string_view value) {
    return std::any_of(list.begin(), list.end(),
                       [&](const json& entry) { return item_is(entry, key, value); });
  }

  bool entry(json& mine, const json& more, const std::string& name, const std::string& where) {
    for (const auto& [key, value] : more.items()) {
      const std::string at = where + "." + key;
      if (key == "name") continue;
      if (key == "properties") {
        if (!mine.contains(key)) mine[key] = json::object();
        for (const auto& [inner, item] : value.items())
          if (!mine[key].contains(inner)) mine[key][inner] = item;
      } else if (key == "commands" || key == "methods" || key == "reports") {
        if (!mine.contains(key)) mine[key] = json::object();
        for (const auto& [inner, item] : value.items()) {
          if (mine[key].contains(inner)) continue;
          if (harvest_asks(name, inner))
            return refuse(at + "." + inner, "the harvest asks it; its answers come from the capture");
          mine[key][inner] = item;
        }
      } else if (key == "children") {
        if (!mine.contains(key))
          return refuse(at, "the capture shows \"" + name + "\" without children");
        for (std::size_t i = 0; i < value.size(); ++i) {
          const std::string child = value[i]["name"];
          const std::string child_at = at + "[" + std::to_string(i) + "]";
          if (json* match = named(mine[key], child)) {
            if (!entry(*match, value[i], child, child_at)) return false;
          } else {
            mine[key].push_back(value[i]);
          }
        }
      } else if (!mine.contains(key) || mine[key] != value) {
        return refuse(at, "the capture decides it");
      }
    }
    return true;
  }

  bool refuse(const std::string& where, std::string message) {
    fault_ = {where, std::move(message)};
    return false;
  }

  addition_fault& fault_;
};

}  // namespace

bool add_to_phone(phone_description& mine, std::string_view additions, addition_fault& fault) {
  // The writer recurses, so depth is bounded as the platform bounds it.
  constexpr int deepest = 64;
  int depth_seen = 0;
  const json::parser_callback_t deepen = [&](int depth, json::parse_event_t, json&) {
    depth_seen = std::max(depth_seen, depth);
    return true;
  };
  json more;
  try {
    more = json::parse(additions, deepen);
  } catch (const json::parse_error& error) {
    fault = {"byte " + std::to_string(error.byte), message_of(error)};
    return false;
  } catch (const json::exception& error) {  // a number out of range
    fault = {"a value", message_of(error)};
    return false;
  }
  if (depth_seen > deepest) {
    fault = {"top level", "nested more than 64 levels deep"};
    return false;
  }
  if (!more.is_object()) {
    fault = {"top level", "expected an object"};
    return false;
  }
  for (const auto& [key, by_name] : {std::pair{"services", true}, {"hid_devices", false}}) {
    if (more.contains(key) && !check_entries(more[key], key, by_name, fault)) return false;
  }
  if (!mine.is_object()) mine = json::object();
  merger merge(fault);
  for (const auto& [key, value] : more.items()) {
    if (key == "services") {
      if (!mine.contains(key)) mine[key] = json::array();
      if (!merge.services(mine[key], value)) return false;
    } else if (key == "hid_devices") {
      if (!mine.contains(key)) mine[key] = json::array();
      if (!merge.hid_devices(mine[key], value)) return false;
    } else if (!mine.contains(key)) {
      mine[key] = value;
    }
  }
  return true;
}

}  // namespace inspect
