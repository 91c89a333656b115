#include <charconv>
#include <nlohmann/json.hpp>

#include "description.h"
#include "printable_text.h"
#include "reply_bytes.h"

namespace tmxsim {
namespace {

using json = nlohmann::ordered_json;

// All replies of one description together stay below this.
constexpr std::size_t max_description_bytes = std::size_t{256} << 20;
// Deeper children or properties are refused rather than recursed into.
constexpr int max_depth = 64;
constexpr std::string_view default_class = "CorvelTMXInterface";

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

std::string found(const json& value) {
  switch (value.type()) {
    case json::value_t::object:
      return "found an object";
    case json::value_t::array:
      return "found an array";
    case json::value_t::string:
      return "found a string";
    case json::value_t::boolean:
      return "found a boolean";
    case json::value_t::null:
      return "found null";
    default:
      return "found " + value.dump();
  }
}

bool expect_object(const json& value, const json_path& at, checker& check) {
  return value.is_object() || check.fail(at, "expected an object, " + found(value));
}

bool expect_array(const json& value, const json_path& at, checker& check) {
  return value.is_array() || check.fail(at, "expected an array, " + found(value));
}

bool read_string(const json& value, const json_path& at, std::string& out,
                 checker& check) {
  if (!value.is_string())
    return check.fail(at, "expected a string, " + found(value));
  out = value.get<std::string>();
  return true;
}

bool read_boolean(const json& value, const json_path& at, bool& out,
                  checker& check) {
  if (!value.is_boolean())
    return check.fail(at, "expected true or false, " + found(value));
  out = value.get<bool>();
  return true;
}

// An integer in [min, max], as its 64-bit two's complement pattern.
bool read_integer(const json& value, const json_path& at, std::string_view what,
                  std::int64_t min, std::uint64_t max, std::uint64_t& out,
                  checker& check) {
  if (!value.is_number_integer())
    return check.fail(at, "expected an integer, " + found(value));
  bool in_range = false;
  if (value.is_number_unsigned()) {
    out = value.get<std::uint64_t>();
    in_range = out <= max;
  } else {
    const auto number = value.get<std::int64_t>();
    out = static_cast<std::uint64_t>(number);
    in_range = number >= min && (number < 0 || out <= max);
  }
  return in_range ||
         check.fail(at, std::string(what) + " must be " + std::to_string(min) +
                            " to " + std::to_string(max) + ", not " + value.dump());
}

bool read_result(const json& value, const json_path& at, std::uint32_t& out,
                 checker& check) {
  const std::string rule =
      "a result is 0 to 4294967295 or \"0x\" and 1 to 8 hexadecimal digits";
  if (value.is_number_integer()) {
    if (value.is_number_unsigned() && value.get<std::uint64_t>() <= UINT32_MAX) {
      out = value.get<std::uint32_t>();
      return true;
    }
    return check.fail(at, rule + ", not " + value.dump());
  }
  if (!value.is_string()) return check.fail(at, "expected a result, " + found(value));
  const auto& text = value.get_ref<const std::string&>();
  if (text.size() > 2 && text.size() <= 10 && text.starts_with("0x")) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + 2, end, out, 16);
    if (error == std::errc() && stop == end) return true;
  }
  // ASCII only: a JSON string may hold DEL and other bytes unfit for a terminal.
  return check.fail(at, rule + ", not " + value.dump(-1, ' ', true));
}

struct key_rule {
  std::string_view what;
  std::uint64_t max;
  bool command_selector_excluded = false;  // selector 2 belongs to "commands"
};

constexpr key_rule command_keys{"command", UINT64_MAX};
constexpr key_rule selector_keys{"selector", UINT32_MAX, true};
constexpr key_rule report_keys{"report id", 255};
constexpr std::uint64_t command_selector = 2;

bool read_key(const std::string& name, const key_rule& rule, const json_path& at,
              std::uint64_t& out, checker& check) {
  const bool decimal =
      !name.empty() && name.find_first_not_of("0123456789") == std::string::npos &&
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

bool has_room(const std::vector<std::uint8_t>& reply, std::size_t size,
              const json_path& at, checker& check) {
  return size <= max_reply_size - reply.size() ||
         check.fail(at, "reply larger than 16 MiB");
}

bool read_size(const json& value, const json_path& at, std::string_view what,
               std::size_t& out, checker& check) {
  std::uint64_t size = 0;
  if (!read_integer(value, at, what, 0, max_reply_size, size, check)) return false;
  out = static_cast<std::size_t>(size);
  return true;
}

bool read_hex(const json& value, const json_path& at,
              std::vector<std::uint8_t>& reply, checker& check) {
  if (!value.is_string()) return check.fail(at, "expected a string, " + found(value));
  const std::string problem = append_hex(value.get_ref<const std::string&>(), reply);
  return problem.empty() || check.fail(at, problem);
}

bool read_text_piece(const json& piece, const json_path& at,
                     std::vector<std::uint8_t>& reply, checker& check) {
  std::string text;
  std::size_t size = 0;
  if (!read_string(piece["text"], at.member("text"), text, check) ||
      !read_size(piece["size"], at.member("size"), "size", size, check) ||
      !has_room(reply, size, at, check))
    return false;
  append_text(reply, text, size);
  return true;
}

bool read_piece(const json& piece, const json_path& at,
                std::vector<std::uint8_t>& reply, checker& check) {
  const std::string rule =
      "a piece is one of {\"u8\":n}, {\"u16\":n}, {\"u32\":n}, {\"i32\":n}, "
      "{\"u64\":n}, {\"hex\":\"...\"}, {\"text\":\"...\",\"size\":n}, {\"zeros\":n}";
  if (!piece.is_object()) return check.fail(at, "expected a piece, " + found(piece));
  if (piece.size() == 2 && piece.contains("text") && piece.contains("size"))
    return read_text_piece(piece, at, reply, check);
  if (piece.size() != 1) return check.fail(at, rule);

  const std::string& name = piece.begin().key();
  const json& value = piece.begin().value();
  const json_path here = at.member(name);
  for (const integer_piece& integer : integer_pieces) {
    if (name != integer.key) continue;
    std::uint64_t bits = 0;
    if (!read_integer(value, here, integer.key, integer.min, integer.max, bits, check) ||
        !has_room(reply, integer.size, at, check))
      return false;
    append_little_endian(reply, bits, integer.size);
    return true;
  }
  if (name == "hex") return read_hex(value, here, reply, check);
  if (name == "zeros") {
    std::size_t size = 0;
    if (!read_size(value, here, "zeros", size, check) || !has_room(reply, size, at, check))
      return false;
    reply.insert(reply.end(), size, 0);
    return true;
  }
  if (name == "text") return check.fail(at, "\"text\" needs \"size\"");
  return check.fail(at, rule);
}

bool read_answer(const json& value, const json_path& at, answer& out,
                 checker& check) {
  if (!value.is_object())
    return check.fail(at, "expected an answer object, " + found(value));
  if (value.contains("reply") && value.contains("fields"))
    return check.fail(at, "\"reply\" and \"fields\" exclude each other");
  for (const auto& [name, item] : value.items()) {
    const json_path here = at.member(name);
    if (name == "result") {
      if (!read_result(item, here, out.result, check)) return false;
    } else if (name == "reply") {
      if (!read_hex(item, here, out.reply, check)) return false;
    } else if (name == "fields") {
      if (!expect_array(item, here, check)) return false;
      for (std::size_t i = 0; i < item.size(); ++i)
        if (!read_piece(item[i], here.at(i), out.reply, check)) return false;
    } else {
      return check.fail(here, "unknown key");
    }
  }
  return check.count_reply(at, out.reply.size());
}

// An object of answers keyed by decimal numbers; each value is one answer or
// a list of them.
bool read_answers(const json& value, const json_path& at, const key_rule& rule,
                  std::vector<answer_list>& out, checker& check) {
  if (!expect_object(value, at, check)) return false;
  for (const auto& [name, item] : value.items()) {
    const json_path here = at.key(name);
    answer_list list;
    if (!read_key(name, rule, here, list.key, check)) return false;
    if (item.is_array()) {
      list.sequence = true;
      list.answers.resize(item.size());
      for (std::size_t i = 0; i < item.size(); ++i)
        if (!read_answer(item[i], here.at(i), list.answers[i], check)) return false;
    } else {
      list.answers.resize(1);
      if (!read_answer(item, here, list.answers[0], check)) return false;
    }
    out.push_back(std::move(list));
  }
  return true;
}

bool read_property(const json& value, const json_path& at, int depth,
                   property_value& out, checker& check) {
  using kind = property_value::kind;
  if (depth > max_depth) return check.fail(at, "nested more than 64 levels deep");
  switch (value.type()) {
    case json::value_t::object:
      out.type = kind::object;
      for (const auto& [name, item] : value.items()) {
        out.members.push_back({name, {}});
        if (!read_property(item, at.key(name), depth + 1, out.members.back().value, check))
          return false;
      }
      return true;
    case json::value_t::array:
      out.type = kind::array;
      out.items.resize(value.size());
      for (std::size_t i = 0; i < value.size(); ++i)
        if (!read_property(value[i], at.at(i), depth + 1, out.items[i], check))
          return false;
      return true;
    case json::value_t::string:
      out.type = kind::string;
      out.text = value.get<std::string>();
      return true;
    case json::value_t::boolean:
      out.type = kind::boolean;
      out.boolean = value.get<bool>();
      return true;
    case json::value_t::number_integer:
      out.type = kind::number;
      out.number = value.get<std::int64_t>();
      return true;
    case json::value_t::number_unsigned:
      if (value.get<std::uint64_t>() > INT64_MAX)
        return check.fail(at, "property numbers are 64-bit signed, not " + value.dump());
      out.type = kind::number;
      out.number = value.get<std::int64_t>();
      return true;
    default:
      return check.fail(at, "expected an object, integer, string, array or boolean, " +
                                found(value));
  }
}

bool read_service(const json& value, const json_path& at, int depth,
                  description& phone, checker& check) {
  if (depth > max_depth) return check.fail(at, "children nested more than 64 levels deep");
  if (!expect_object(value, at, check)) return false;
  const std::size_t index = phone.services.size();
  phone.services.emplace_back();
  const json* children = nullptr;
  {
    // Only this entry is added until the loop ends, so the reference holds.
    service_description& service = phone.services.back();
    service.class_name = default_class;
    bool named = false;
    for (const auto& [name, item] : value.items()) {
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
        children = &item;
      } else {
        ok = check.fail(here, "unknown key");
      }
      if (!ok) return false;
    }
    if (!named) return check.fail(at, "missing required key \"name\"");
  }
  if (children == nullptr || children->empty()) return true;
  phone.services[index].first_child = phone.services.size();
  const json_path list = at.member("children");
  for (std::size_t i = 0; i < children->size(); ++i)
    if (!read_service((*children)[i], list.at(i), depth + 1, phone, check)) return false;
  return true;
}

bool read_hid_device(const json& value, const json_path& at, description& phone,
                     checker& check) {
  if (!expect_object(value, at, check)) return false;
  hid_description device;
  bool has_page = false;
  bool has_usage = false;
  for (const auto& [name, item] : value.items()) {
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

bool read_phone(const json& value, description& phone, checker& check) {
  const json_path top;
  if (!expect_object(value, top, check)) return false;
  for (const auto& [name, item] : value.items()) {
    const json_path here = top.member(name);
    if (name == "services") {
      if (!expect_array(item, here, check)) return false;
      for (std::size_t i = 0; i < item.size(); ++i)
        if (!read_service(item[i], here.at(i), 0, phone, check)) return false;
    } else if (name == "hid_devices") {
      if (!expect_array(item, here, check)) return false;
      for (std::size_t i = 0; i < item.size(); ++i)
        if (!read_hid_device(item[i], here.at(i), phone, check)) return false;
    } else {
      return check.fail(here, "unknown key");
    }
  }
  return true;
}

// The parser's own words, without its exception name and position prefix.
std::string syntax_problem(std::string_view what) {
  const std::size_t column = what.find("column ");
  if (column != std::string_view::npos) {
    const std::size_t colon = what.find(": ", column);
    if (colon != std::string_view::npos) what.remove_prefix(colon + 2);
  } else if (what.starts_with('[') && what.find("] ") != std::string_view::npos) {
    what.remove_prefix(what.find("] ") + 2);
  }
  return printable(what);
}

}  // namespace

parse_result parse_description(std::string_view json_text, std::string_view origin) {
  parse_result result;
  const std::string prefix = "tmxsim: " + printable(origin) + ": ";
  json document;
  try {
    document = json::parse(json_text.begin(), json_text.end());
  } catch (const json::parse_error& error) {
    // The parser counts the offending byte from 1.
    const std::size_t offset = error.byte > 0 ? error.byte - 1 : 0;
    result.error = prefix + "invalid JSON at byte offset " + std::to_string(offset) +
                   ": " + syntax_problem(error.what());
    return result;
  } catch (const json::exception& error) {
    result.error = prefix + "invalid JSON: " + syntax_problem(error.what());
    return result;
  }
  checker check;
  if (!read_phone(document, result.phone, check)) {
    result.phone = description{};
    result.error = prefix + check.error();
  }
  return result;
}

}  // namespace tmxsim
