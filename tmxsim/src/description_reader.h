#pragma once

// The checks a description goes through, written once for both JSON parsers
// that may read it (see description_parser.cpp). Each gives a value as a
// small `node` class:
//
//   json_kind kind()
//   std::string_view string()
//   bool boolean()
//   std::int64_t integer()             json_kind::integer
//   std::uint64_t unsigned_integer()   json_kind::unsigned_integer
//   std::string number_text()          a number as nlohmann::json writes it
//   std::string ascii_text()           a string the same way, in ASCII
//   items()                            an array's values, and size()
//   members()                          an object's keys, each once where it
//                                      first stands, with its last value;
//                                      size() and find(name)

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "description.h"
#include "printable_text.h"
#include "reply_bytes.h"

namespace tmxsim::description_reading {

// nlohmann::json's kinds of value: integers written with a minus sign are
// `integer`, all others `unsigned_integer`.
enum class json_kind : std::uint8_t {
  object, array, string, boolean, null, integer, unsigned_integer, floating
};

template <class node>
struct json_member {
  std::string_view name;
  node value;
};

// A double as nlohmann::json writes it, and a string as it writes it with
// every character beyond ASCII escaped.
std::string json_number_text(double number);
std::string json_ascii_text(std::string_view text);

// How every message about `origin` starts.
std::string message_prefix(std::string_view origin);

// Reads `json` with nlohmann::json only: for what simdjson refuses.
parse_result parse_with_nlohmann(std::string_view json, std::string_view origin);

// All replies of one description together stay below this.
inline constexpr std::size_t max_description_bytes = std::size_t{256} << 20;
// Deeper children or properties are refused rather than recursed into.
inline constexpr int max_depth = 64;
inline constexpr std::string_view default_class = "CorvelTMXInterface";

// Where a value sits in the description. Each level lives on the stack of the
// function that checks the value, so a path costs nothing until it is shown.
class json_path {
 public:
  json_path() = default;

  json_path member(std::string_view name) const {
    return {this, step::member, name, 0};
  }
  json_path key(std::string_view name) const { return {this, step::key, name, 0}; }
  json_path at(std::size_t index) const { return {this, step::index, {}, index}; }

  std::string text() const {
    std::string parent_text;
    if (parent_ != nullptr && parent_->kind_ != step::root)
      parent_text = parent_->text();
    switch (kind_) {
      case step::root:
        return "top level";
      case step::member:
        return parent_text + (parent_text.empty() ? "" : ".") + printable(name_);
      case step::key:
        return parent_text + "[\"" + printable(name_) + "\"]";
      case step::index:
        return parent_text + "[" + std::to_string(index_) + "]";
    }
    return parent_text;
  }

 private:
  enum class step : std::uint8_t { root, member, key, index };

  json_path(const json_path* parent, step kind, std::string_view name,
            std::size_t index)
      : parent_(parent), kind_(kind), name_(name), index_(index) {}

  const json_path* parent_ = nullptr;
  step kind_ = step::root;
  std::string_view name_;
  std::size_t index_ = 0;
};

// Keeps the first problem found; every check returns false once there is one.
class checker {
 public:
  bool fail(const json_path& at, const std::string& problem) {
    if (error_.empty()) error_ = at.text() + ": " + problem;
    return false;
  }

  bool count_reply(const json_path& at, std::size_t size) {
    reply_bytes_ += size;
    return reply_bytes_ <= max_description_bytes ||
           fail(at, "the replies of the description add up to more than 256 MiB");
  }

  const std::string& error() const { return error_; }

 private:
  std::string error_;
  std::size_t reply_bytes_ = 0;
};

template <class node>
std::string found(const node& value) {
  switch (value.kind()) {
    case json_kind::object:
      return "found an object";
    case json_kind::array:
      return "found an array";
    case json_kind::string:
      return "found a string";
    case json_kind::boolean:
      return "found a boolean";
    case json_kind::null:
      return "found null";
    default:
      return "found " + value.number_text();
  }
}

inline bool is_integer(json_kind kind) {
  return kind == json_kind::integer || kind == json_kind::unsigned_integer;
}

template <class node>
bool expect_object(const node& value, const json_path& at, checker& check) {
  return value.kind() == json_kind::object ||
         check.fail(at, "expected an object, " + found(value));
}

template <class node>
bool expect_array(const node& value, const json_path& at, checker& check) {
  return value.kind() == json_kind::array ||
         check.fail(at, "expected an array, " + found(value));
}

template <class node>
bool read_string(const node& value, const json_path& at, std::string& out,
                 checker& check) {
  if (value.kind() != json_kind::string)
    return check.fail(at, "expected a string, " + found(value));
  out = value.string();
  return true;
}

template <class node>
bool read_boolean(const node& value, const json_path& at, bool& out, checker& check) {
  if (value.kind() != json_kind::boolean)
    return check.fail(at, "expected true or false, " + found(value));
  out = value.boolean();
  return true;
}

// An integer in [min, max], as its 64-bit two's complement pattern.
template <class node>
bool read_integer(const node& value, const json_path& at, std::string_view what,
                  std::int64_t min, std::uint64_t max, std::uint64_t& out,
                  checker& check) {
  if (!is_integer(value.kind()))
    return check.fail(at, "expected an integer, " + found(value));
  bool in_range = false;
  if (value.kind() == json_kind::unsigned_integer) {
    out = value.unsigned_integer();
    in_range = out <= max;
  } else {
    const std::int64_t number = value.integer();
    out = static_cast<std::uint64_t>(number);
    in_range = number >= min && (number < 0 || out <= max);
  }
  return in_range ||
         check.fail(at, std::string(what) + " must be " + std::to_string(min) + " to " +
                            std::to_string(max) + ", not " + value.number_text());
}

template <class node>
bool read_result(const node& value, const json_path& at, std::uint32_t& out,
                 checker& check) {
  const std::string rule =
      "a result is 0 to 4294967295 or \"0x\" and 1 to 8 hexadecimal digits";
  if (is_integer(value.kind())) {
    if (value.kind() == json_kind::unsigned_integer &&
        value.unsigned_integer() <= UINT32_MAX) {
      out = static_cast<std::uint32_t>(value.unsigned_integer());
      return true;
    }
    return check.fail(at, rule + ", not " + value.number_text());
  }
  if (value.kind() != json_kind::string)
    return check.fail(at, "expected a result, " + found(value));
  const std::string_view text = value.string();
  if (text.size() > 2 && text.size() <= 10 && text.starts_with("0x")) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + 2, end, out, 16);
    if (error == std::errc() && stop == end) return true;
  }
  // ASCII only: a JSON string may hold DEL and other bytes unfit for a terminal.
  return check.fail(at, rule + ", not " + value.ascii_text());
}

struct key_rule {
  std::string_view what;
  std::uint64_t max;
  bool command_selector_excluded = false;  // selector 2 belongs to "commands"
};

inline constexpr key_rule command_keys{"command", UINT64_MAX};
inline constexpr key_rule selector_keys{"selector", UINT32_MAX, true};
inline constexpr key_rule report_keys{"report id", 255};
inline constexpr std::uint64_t command_selector = 2;

inline bool read_key(std::string_view name, const key_rule& rule, const json_path& at,
                     std::uint64_t& out, checker& check) {
  const bool decimal = !name.empty() &&
                       name.find_first_not_of("0123456789") == std::string_view::npos &&
                       (name.size() == 1 || name[0] != '0');
  if (!decimal)
    return check.fail(at, "a " + std::string(rule.what) +
                              " key is a decimal number without leading zeros");
  const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), out);
  if (error != std::errc() || out > rule.max)
    return check.fail(at, std::string(rule.what) + " keys go up to " +
                              std::to_string(rule.max));
  if (rule.command_selector_excluded && out == command_selector)
    return check.fail(at, "selector 2 is answered from \"commands\"");
  return true;
}

inline bool has_room(const std::vector<std::uint8_t>& reply, std::size_t size,
                     const json_path& at, checker& check) {
  return size <= max_reply_size - reply.size() ||
         check.fail(at, "reply larger than 16 MiB");
}

template <class node>
bool read_size(const node& value, const json_path& at, std::string_view what,
               std::size_t& out, checker& check) {
  std::uint64_t size = 0;
  if (!read_integer(value, at, what, 0, max_reply_size, size, check)) return false;
  out = static_cast<std::size_t>(size);
  return true;
}

template <class node>
bool read_hex(const node& value, const json_path& at, std::vector<std::uint8_t>& reply,
              checker& check) {
  if (value.kind() != json_kind::string)
    return check.fail(at, "expected a string, " + found(value));
  const std::string problem = append_hex(value.string(), reply);
  return problem.empty() || check.fail(at, problem);
}

template <class members>
bool read_text_piece(const members& piece, const json_path& at,
                     std::vector<std::uint8_t>& reply, checker& check) {
  std::string text;
  std::size_t size = 0;
  if (!read_string(*piece.find("text"), at.member("text"), text, check) ||
      !read_size(*piece.find("size"), at.member("size"), "size", size, check) ||
      !has_room(reply, size, at, check))
    return false;
  append_text(reply, text, size);
  return true;
}

template <class node>
bool read_piece(const node& value, const json_path& at, std::vector<std::uint8_t>& reply,
                checker& check) {
  const std::string rule =
      "a piece is one of {\"u8\":n}, {\"u16\":n}, {\"u32\":n}, {\"i32\":n}, "
      "{\"u64\":n}, {\"hex\":\"...\"}, {\"text\":\"...\",\"size\":n}, {\"zeros\":n}";
  if (value.kind() != json_kind::object)
    return check.fail(at, "expected a piece, " + found(value));
  const auto piece = value.members();
  if (piece.size() == 2 && piece.find("text") && piece.find("size"))
    return read_text_piece(piece, at, reply, check);
  if (piece.size() != 1) return check.fail(at, rule);

  const auto& [name, item] = *piece.begin();
  const json_path here = at.member(name);
  for (const integer_piece& integer : integer_pieces) {
    if (name != integer.key) continue;
    std::uint64_t bits = 0;
    if (!read_integer(item, here, integer.key, integer.min, integer.max, bits, check) ||
        !has_room(reply, integer.size, at, check))
      return false;
    append_little_endian(reply, bits, integer.size);
    return true;
  }
  if (name == "hex") return read_hex(item, here, reply, check);
  if (name == "zeros") {
    std::size_t size = 0;
    if (!read_size(item, here, "zeros", size, check) || !has_room(reply, size, at, check))
      return false;
    reply.insert(reply.end(), size, 0);
    return true;
  }
  if (name == "text") return check.fail(at, "\"text\" needs \"size\"");
  return check.fail(at, rule);
}

template <class node>
bool read_answer(const node& value, const json_path& at, answer& out, checker& check) {
  if (value.kind() != json_kind::object)
    return check.fail(at, "expected an answer object, " + found(value));
  const auto members = value.members();
  if (members.find("reply") && members.find("fields"))
    return check.fail(at, "\"reply\" and \"fields\" exclude each other");
  for (const auto& [name, item] : members) {
    const json_path here = at.member(name);
    if (name == "result") {
      if (!read_result(item, here, out.result, check)) return false;
    } else if (name == "reply") {
      if (!read_hex(item, here, out.reply, check)) return false;
    } else if (name == "fields") {
      if (!expect_array(item, here, check)) return false;
      std::size_t i = 0;
      for (const node piece : item.items())
        if (!read_piece(piece, here.at(i++), out.reply, check)) return false;
    } else {
      return check.fail(here, "unknown key");
    }
  }
  return check.count_reply(at, out.reply.size());
}

// An object of answers keyed by decimal numbers; each value is one answer or
// a list of them.
template <class node>
bool read_answers(const node& value, const json_path& at, const key_rule& rule,
                  std::vector<answer_list>& out, checker& check) {
  if (!expect_object(value, at, check)) return false;
  for (const auto& [name, item] : value.members()) {
    const json_path here = at.key(name);
    answer_list list;
    if (!read_key(name, rule, here, list.key, check)) return false;
    if (item.kind() == json_kind::array) {
      const auto items = item.items();
      list.sequence = true;
      list.answers.resize(items.size());
      std::size_t i = 0;
      for (const node entry : items) {
        if (!read_answer(entry, here.at(i), list.answers[i], check)) return false;
        ++i;
      }
    } else {
      list.answers.resize(1);
      if (!read_answer(item, here, list.answers[0], check)) return false;
    }
    out.push_back(std::move(list));
  }
  return true;
}

template <class node>
bool read_property(const node& value, const json_path& at, int depth,
                   property_value& out, checker& check) {
  using kind = property_value::kind;
  if (depth > max_depth) return check.fail(at, "nested more than 64 levels deep");
  switch (value.kind()) {
    case json_kind::object:
      out.type = kind::object;
      for (const auto& [name, item] : value.members()) {
        out.members.push_back({std::string(name), {}});
        if (!read_property(item, at.key(name), depth + 1, out.members.back().value, check))
          return false;
      }
      return true;
    case json_kind::array: {
      const auto items = value.items();
      out.type = kind::array;
      out.items.resize(items.size());
      std::size_t i = 0;
      for (const node item : items) {
        if (!read_property(item, at.at(i), depth + 1, out.items[i], check)) return false;
        ++i;
      }
      return true;
    }
    case json_kind::string:
      out.type = kind::string;
      out.text = value.string();
      return true;
    case json_kind::boolean:
      out.type = kind::boolean;
      out.boolean = value.boolean();
      return true;
    case json_kind::integer:
      out.type = kind::number;
      out.number = value.integer();
      return true;
    case json_kind::unsigned_integer:
      if (value.unsigned_integer() > INT64_MAX)
        return check.fail(at, "property numbers are 64-bit signed, not " +
                                  value.number_text());
      out.type = kind::number;
      out.number = static_cast<std::int64_t>(value.unsigned_integer());
      return true;
    default:
      return check.fail(at, "expected an object, integer, string, array or boolean, " +
                                found(value));
  }
}

template <class node>
bool read_service(const node& value, const json_path& at, int depth, description& phone,
                  checker& check) {
  if (depth > max_depth) return check.fail(at, "children nested more than 64 levels deep");
  if (!expect_object(value, at, check)) return false;
  const std::size_t index = phone.services.size();
  phone.services.emplace_back();
  const auto members = value.members();
  {
    // Only this entry is added until the loop ends, so the reference holds.
    service_description& service = phone.services.back();
    service.class_name = default_class;
    bool named = false;
    for (const auto& [name, item] : members) {
      const json_path here = at.member(name);
      bool ok = true;
      if (name == "name") {
        ok = read_string(item, here, service.name, check);
        named = true;
      } else if (name == "class") {
        ok = read_string(item, here, service.class_name, check);
      } else if (name == "properties") {
        ok = expect_object(item, here, check) &&
             read_property(item, here, 0, service.properties, check);
      } else if (name == "open_result") {
        ok = read_result(item, here, service.open_result, check);
      } else if (name == "null_connection") {
        ok = read_boolean(item, here, service.null_connection, check);
      } else if (name == "commands") {
        ok = read_answers(item, here, command_keys, service.commands, check);
      } else if (name == "methods") {
        ok = read_answers(item, here, selector_keys, service.methods, check);
      } else if (name == "children") {
        ok = expect_array(item, here, check);
      } else {
        ok = check.fail(here, "unknown key");
      }
      if (!ok) return false;
    }
    if (!named) return check.fail(at, "missing required key \"name\"");
  }
  const auto children = members.find("children");
  if (!children) return true;
  const auto items = children->items();
  if (items.size() == 0) return true;
  phone.services[index].first_child = phone.services.size();
  const json_path list = at.member("children");
  std::size_t i = 0;
  for (const node child : items)
    if (!read_service(child, list.at(i++), depth + 1, phone, check)) return false;
  return true;
}

template <class node>
bool read_hid_device(const node& value, const json_path& at, description& phone,
                     checker& check) {
  if (!expect_object(value, at, check)) return false;
  hid_description device;
  bool has_page = false;
  bool has_usage = false;
  for (const auto& [name, item] : value.members()) {
    const json_path here = at.member(name);
    std::uint64_t number = 0;
    bool ok = true;
    if (name == "usage_page") {
      ok = read_integer(item, here, "usage_page", 0, 0xffff, number, check);
      device.usage_page = static_cast<std::uint32_t>(number);
      has_page = true;
    } else if (name == "usage") {
      ok = read_integer(item, here, "usage", 0, 0xffff, number, check);
      device.usage = static_cast<std::uint32_t>(number);
      has_usage = true;
    } else if (name == "create") {
      ok = read_boolean(item, here, device.create, check);
    } else if (name == "open_result") {
      ok = read_result(item, here, device.open_result, check);
    } else if (name == "reports") {
      ok = read_answers(item, here, report_keys, device.reports, check);
    } else {
      ok = check.fail(here, "unknown key");
    }
    if (!ok) return false;
  }
  if (!has_page) return check.fail(at, "missing required key \"usage_page\"");
  if (!has_usage) return check.fail(at, "missing required key \"usage\"");
  phone.hid_devices.push_back(std::move(device));
  return true;
}

template <class node>
bool read_phone(const node& value, description& phone, checker& check) {
  const json_path top;
  if (!expect_object(value, top, check)) return false;
  for (const auto& [name, item] : value.members()) {
    const json_path here = top.member(name);
    if (name == "services") {
      if (!expect_array(item, here, check)) return false;
      std::size_t i = 0;
      for (const node service : item.items())
        if (!read_service(service, here.at(i++), 0, phone, check)) return false;
    } else if (name == "hid_devices") {
      if (!expect_array(item, here, check)) return false;
      std::size_t i = 0;
      for (const node device : item.items())
        if (!read_hid_device(device, here.at(i++), phone, check)) return false;
    } else {
      return check.fail(here, "unknown key");
    }
  }
  return true;
}

// The phone `root` describes, or the one-line message about `origin`.
template <class node>
parse_result read_description(const node& root, std::string_view origin) {
  parse_result result;
  checker check;
  if (!read_phone(root, result.phone, check)) {
    result.phone = description{};
    result.error = message_prefix(origin) + check.error();
  }
  return result;
}

}  // namespace tmxsim::description_reading
