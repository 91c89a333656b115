// Descriptions are read with simdjson: a bulk one runs to megabytes, nearly
// all of it hexadecimal strings. Whatever simdjson refuses, or might read
// other than nlohmann::json does, is read again with nlohmann::json, whose
// words the messages about broken descriptions keep (description_nlohmann.cpp).

#include <simdjson.h>

#include <algorithm>
#include <optional>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "description_reader.h"

namespace tmxsim {
namespace description_reading {

std::string message_prefix(std::string_view origin) {
  return "tmxsim: " + printable(origin) + ": ";
}

}  // namespace description_reading

namespace {

using description_reading::json_kind;
using description_reading::json_member;
namespace ondemand = simdjson::ondemand;

// One value as nlohmann::ordered_json holds it. A string without escapes
// stays where it is in the text: simdjson's own tree would copy every one.
struct tree_value {
  json_kind kind = json_kind::null;
  std::uint32_t size = 0;  // a string's bytes, an array's items, an object's members
  union {
    const char* text = nullptr;
    std::int64_t integer;
    std::uint64_t unsigned_integer;
    double floating;
    bool boolean;
    std::size_t first;  // an array's or object's first entry
  };
};

// Deeper texts are left to nlohmann::json, which then names what is too deep.
constexpr int max_tree_depth = 256;

// The whole text, read through simdjson's On-Demand API. It checks only the
// values that are taken, not those skipped; every value is taken here, so
// all of the text is checked.
class text_tree {
 public:
  // False where simdjson finds a fault, where the top level is no object, or
  // where nlohmann::json might read the text otherwise: such a text is left
  // to nlohmann::json, which also words the message.
  bool read(ondemand::document& document, std::size_t text_size) {
    // Room for a value every four bytes, as many as a dense text holds: pages
    // not written to cost nothing, growing the vectors would.
    const std::size_t room = std::min(text_size / 4, std::size_t{1} << 20);
    entries_.reserve(room);
    names_.reserve(room);
    ondemand::object object;
    const char* location = nullptr;
    return document.get_object().get(object) == simdjson::SUCCESS &&
           read_object(object, 0, root_) &&
           // nothing after the object
           document.current_location().get(location) == simdjson::OUT_OF_BOUNDS;
  }

  const tree_value& root() const { return root_; }
  const tree_value& entry(std::size_t index) const { return entries_[index]; }
  std::string_view name(std::size_t index) const { return names_[index]; }

 private:
  bool read_value(ondemand::value value, int depth, tree_value& out) {
    ondemand::json_type type{};
    if (value.type().get(type) != simdjson::SUCCESS) return false;
    switch (type) {
      case ondemand::json_type::object: {
        ondemand::object object;
        return value.get_object().get(object) == simdjson::SUCCESS &&
               read_object(object, depth, out);
      }
      case ondemand::json_type::array: {
        ondemand::array array;
        return value.get_array().get(array) == simdjson::SUCCESS &&
               read_array(array, depth, out);
      }
      case ondemand::json_type::string:
        return read_string(value, out);
      case ondemand::json_type::number:
        return read_number(value, out);
      case ondemand::json_type::boolean:
        out.kind = json_kind::boolean;
        return value.get_bool().get(out.boolean) == simdjson::SUCCESS;
      case ondemand::json_type::null: {
        bool null = false;
        out.kind = json_kind::null;
        return value.is_null().get(null) == simdjson::SUCCESS && null;
      }
    }
    return false;
  }

  bool read_string(ondemand::value& value, tree_value& out) {
    // The token is the quoted string and the blanks after it.
    std::string_view token = value.raw_json_token();
    token = token.substr(0, token.find_last_not_of(" \t\n\r") + 1);
    if (token.size() < 2 || token.back() != '"') return false;
    std::string_view text = token.substr(1, token.size() - 2);
    if (text.find('\\') != std::string_view::npos) {
      if (value.get_string().get(text) != simdjson::SUCCESS) return false;
    } else if (value.get_raw_json_string().error() != simdjson::SUCCESS) {
      return false;
    }
    if (text.size() > UINT32_MAX) return false;
    out.kind = json_kind::string;
    out.size = static_cast<std::uint32_t>(text.size());
    out.text = text.data();
    return true;
  }

  // nlohmann::json reads a number written with a minus sign as signed, any
  // other integer as unsigned, and one with a fraction or exponent as a
  // double. An integer beyond 64 bits it reads as a double; simdjson does
  // not, so such a text is left to it.
  static bool read_number(ondemand::value& value, tree_value& out) {
    const std::string_view token = value.raw_json_token();
    ondemand::number_type type{};
    if (value.get_number_type().get(type) != simdjson::SUCCESS) return false;
    switch (type) {
      case ondemand::number_type::signed_integer: {
        std::int64_t number = 0;
        if (value.get_int64().get(number) != simdjson::SUCCESS) return false;
        if (token.starts_with('-')) {
          out.kind = json_kind::integer;
          out.integer = number;
        } else {
          out.kind = json_kind::unsigned_integer;
          out.unsigned_integer = static_cast<std::uint64_t>(number);
        }
        return true;
      }
      case ondemand::number_type::unsigned_integer:
        out.kind = json_kind::unsigned_integer;
        return value.get_uint64().get(out.unsigned_integer) == simdjson::SUCCESS;
      case ondemand::number_type::floating_point_number:
        out.kind = json_kind::floating;
        return token.find_first_of(".eE") != std::string_view::npos &&
               value.get_double().get(out.floating) == simdjson::SUCCESS;
    }
    return false;
  }

  bool read_array(ondemand::array& array, int depth, tree_value& out) {
    if (depth >= max_tree_depth) return false;
    const std::size_t mark = pending_.size();
    for (auto item : array) {
      ondemand::value value;
      tree_value entry;
      if (item.get(value) != simdjson::SUCCESS || !read_value(value, depth + 1, entry))
        return false;
      pending_.push_back(entry);
      pending_names_.emplace_back();
    }
    return close(mark, json_kind::array, out);
  }

  // A key given again keeps its first place and takes the last value.
  bool read_object(ondemand::object& object, int depth, tree_value& out) {
    if (depth >= max_tree_depth) return false;
    constexpr std::size_t few = 16;  // keys looked up by scanning
    std::unordered_map<std::string_view, std::size_t> places;
    const std::size_t mark = pending_.size();
    for (auto member : object) {
      ondemand::field field;
      std::string_view name;
      tree_value entry;
      if (std::move(member).get(field) != simdjson::SUCCESS ||
          field.unescaped_key().get(name) != simdjson::SUCCESS ||
          !read_value(field.value(), depth + 1, entry))
        return false;
      std::size_t place = pending_.size();
      if (place - mark < few) {
        for (std::size_t at = mark; at < pending_.size(); ++at)
          if (pending_names_[at] == name) place = at;
      } else {
        if (places.empty())
          for (std::size_t at = mark; at < pending_.size(); ++at)
            places.emplace(pending_names_[at], at);
        place = places.try_emplace(name, pending_.size()).first->second;
      }
      if (place == pending_.size()) {
        pending_.push_back(entry);
        pending_names_.push_back(name);
      } else {
        pending_[place] = entry;
      }
    }
    return close(mark, json_kind::object, out);
  }

  // The entries read since `mark` become the entries of `out`.
  bool close(std::size_t mark, json_kind kind, tree_value& out) {
    const std::size_t count = pending_.size() - mark;
    if (count > UINT32_MAX) return false;
    out.kind = kind;
    out.size = static_cast<std::uint32_t>(count);
    out.first = entries_.size();
    entries_.insert(entries_.end(), pending_.begin() + static_cast<std::ptrdiff_t>(mark),
                    pending_.end());
    names_.insert(names_.end(), pending_names_.begin() + static_cast<std::ptrdiff_t>(mark),
                  pending_names_.end());
    pending_.resize(mark);
    pending_names_.resize(mark);
    return true;
  }

  tree_value root_;
  std::vector<tree_value> entries_;
  std::vector<std::string_view> names_;  // of object members; "" for array items
  // The entries of the arrays and objects being read, innermost last.
  std::vector<tree_value> pending_;
  std::vector<std::string_view> pending_names_;
};

class tree_items;
class tree_members;

class tree_node {
 public:
  tree_node(const text_tree& tree, const tree_value& value) : tree_(&tree), value_(&value) {}

  json_kind kind() const { return value_->kind; }
  std::string_view string() const { return {value_->text, value_->size}; }
  bool boolean() const { return value_->boolean; }
  std::int64_t integer() const { return value_->integer; }
  std::uint64_t unsigned_integer() const { return value_->unsigned_integer; }
  std::string number_text() const {
    switch (value_->kind) {
      case json_kind::integer:
        return std::to_string(value_->integer);
      case json_kind::unsigned_integer:
        return std::to_string(value_->unsigned_integer);
      default:
        return description_reading::json_number_text(value_->floating);
    }
  }
  std::string ascii_text() const { return description_reading::json_ascii_text(string()); }
  tree_items items() const;
  tree_members members() const;

 private:
  const text_tree* tree_;
  const tree_value* value_;
};

// An array's items, or an object's members, by their place in the tree.
class tree_entries {
 public:
  template <class entry>
  class iterator {
   public:
    iterator(const text_tree& tree, std::size_t index) : tree_(&tree), index_(index) {}
    entry operator*() const {
      const tree_node value(*tree_, tree_->entry(index_));
      if constexpr (std::is_same_v<entry, tree_node>)
        return value;
      else
        return {tree_->name(index_), value};
    }
    iterator& operator++() {
      ++index_;
      return *this;
    }
    bool operator!=(const iterator& other) const { return index_ != other.index_; }

   private:
    const text_tree* tree_;
    std::size_t index_;
  };

  tree_entries(const text_tree& tree, const tree_value& container)
      : tree_(&tree), first_(container.first), size_(container.size) {}
  std::size_t size() const { return size_; }

 protected:
  const text_tree* tree_;
  std::size_t first_;
  std::size_t size_;
};

class tree_items : public tree_entries {
 public:
  using tree_entries::tree_entries;
  iterator<tree_node> begin() const { return {*tree_, first_}; }
  iterator<tree_node> end() const { return {*tree_, first_ + size_}; }
};

class tree_members : public tree_entries {
 public:
  using member = json_member<tree_node>;
  using tree_entries::tree_entries;
  iterator<member> begin() const { return {*tree_, first_}; }
  iterator<member> end() const { return {*tree_, first_ + size_}; }
  std::optional<tree_node> find(std::string_view name) const {
    for (std::size_t index = first_; index < first_ + size_; ++index)
      if (tree_->name(index) == name) return tree_node(*tree_, tree_->entry(index));
    return std::nullopt;
  }
};

tree_items tree_node::items() const { return {*tree_, *value_}; }
tree_members tree_node::members() const { return {*tree_, *value_}; }

}  // namespace

static_assert(description_padding >= simdjson::SIMDJSON_PADDING);

parse_result parse_description(std::string_view json, std::string_view origin, bool padded) {
  // nlohmann::json passes over a byte order mark at the start; simdjson does not.
  std::string_view body = json;
  if (body.starts_with("\xef\xbb\xbf")) body.remove_prefix(3);
  if (body.empty()) return description_reading::parse_with_nlohmann(json, origin);
  // simdjson reads past the end of what it parses: without padding after the
  // text, it parses a padded copy.
  simdjson::padded_string copy;
  simdjson::padded_string_view text(body.data(), body.size(), body.size() + description_padding);
  if (!padded) {
    copy = simdjson::padded_string(body);
    text = copy;
  }
  ondemand::parser parser;
  ondemand::document document;
  text_tree tree;
  if (parser.iterate(text).get(document) != simdjson::SUCCESS || !tree.read(document, body.size()))
    return description_reading::parse_with_nlohmann(json, origin);
  return description_reading::read_description(tree_node(tree, tree.root()), origin);
}

}  // namespace tmxsim
