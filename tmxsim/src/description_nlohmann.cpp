// nlohmann::json reads the descriptions that simdjson refuses or might read
// otherwise, so that their messages keep nlohmann's words and positions. It
// also writes the numbers and strings that messages quote.

#include <nlohmann/json.hpp>
#include <optional>

#include "description_reader.h"

namespace tmxsim::description_reading {
namespace {

using json = nlohmann::ordered_json;

class nlohmann_items;
class nlohmann_members;

class nlohmann_node {
 public:
  explicit nlohmann_node(const json& value) : value_(&value) {}

  json_kind kind() const {
    switch (value_->type()) {
      case json::value_t::object:
        return json_kind::object;
      case json::value_t::array:
        return json_kind::array;
      case json::value_t::string:
        return json_kind::string;
      case json::value_t::boolean:
        return json_kind::boolean;
      case json::value_t::null:
        return json_kind::null;
      case json::value_t::number_integer:
        return json_kind::integer;
      case json::value_t::number_unsigned:
        return json_kind::unsigned_integer;
      default:  // a float; parsing gives no binary or discarded value
        return json_kind::floating;
    }
  }
  std::string_view string() const { return value_->get_ref<const std::string&>(); }
  bool boolean() const { return value_->get<bool>(); }
  std::int64_t integer() const { return value_->get<std::int64_t>(); }
  std::uint64_t unsigned_integer() const { return value_->get<std::uint64_t>(); }
  std::string number_text() const { return value_->dump(); }
  std::string ascii_text() const { return value_->dump(-1, ' ', true); }
  nlohmann_items items() const;
  nlohmann_members members() const;

 private:
  const json* value_;
};

// Walks a container, giving each entry as `make` makes it.
template <auto make>
class json_iterator {
 public:
  explicit json_iterator(json::const_iterator at) : at_(at) {}
  auto operator*() const { return make(at_); }
  json_iterator& operator++() {
    ++at_;
    return *this;
  }
  bool operator!=(const json_iterator& other) const { return at_ != other.at_; }

 private:
  json::const_iterator at_;
};

class nlohmann_items {
 public:
  using iterator =
      json_iterator<[](json::const_iterator at) { return nlohmann_node(*at); }>;

  explicit nlohmann_items(const json& array) : array_(&array) {}
  std::size_t size() const { return array_->size(); }
  iterator begin() const { return iterator(array_->cbegin()); }
  iterator end() const { return iterator(array_->cend()); }

 private:
  const json* array_;
};

// ordered_json keeps each key once, where it first stands, with its last value.
class nlohmann_members {
 public:
  using iterator = json_iterator<[](json::const_iterator at) {
    return json_member<nlohmann_node>{at.key(), nlohmann_node(at.value())};
  }>;

  explicit nlohmann_members(const json& object) : object_(&object) {}
  std::size_t size() const { return object_->size(); }
  std::optional<nlohmann_node> find(std::string_view name) const {
    const auto at = object_->find(name);
    if (at == object_->end()) return std::nullopt;
    return nlohmann_node(*at);
  }
  iterator begin() const { return iterator(object_->cbegin()); }
  iterator end() const { return iterator(object_->cend()); }

 private:
  const json* object_;
};

nlohmann_items nlohmann_node::items() const { return nlohmann_items(*value_); }
nlohmann_members nlohmann_node::members() const { return nlohmann_members(*value_); }

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

std::string json_number_text(double number) { return json(number).dump(); }

std::string json_ascii_text(std::string_view text) {
  return json(std::string(text)).dump(-1, ' ', true);
}

parse_result parse_with_nlohmann(std::string_view json_text, std::string_view origin) {
  json document;
  try {
    document = json::parse(json_text.begin(), json_text.end());
  } catch (const json::parse_error& error) {
    // The parser counts the offending byte from 1.
    const std::size_t offset = error.byte > 0 ? error.byte - 1 : 0;
    parse_result result;
    result.error = message_prefix(origin) + "invalid JSON at byte offset " +
                   std::to_string(offset) + ": " + syntax_problem(error.what());
    return result;
  } catch (const json::exception& error) {
    parse_result result;
    result.error = message_prefix(origin) + "invalid JSON: " + syntax_problem(error.what());
    return result;
  }
  return read_description(nlohmann_node(document), origin);
}

}  // namespace tmxsim::description_reading
