#pragma once

// A phone as its description gives it, checked and decoded: the data the
// simulated platform answers from. Nothing here is a CoreFoundation object.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tmxsim {

struct property_member;

// A registry property: JSON object, integer, string, array or boolean.
struct property_value {
  enum class kind : std::uint8_t { object, number, string, array, boolean };
  kind type = kind::object;
  std::int64_t number = 0;
  bool boolean = false;
  std::string text;
  std::vector<property_value> items;
  std::vector<property_member> members;  // in file order
};

struct property_member {
  std::string name;
  property_value value;
};

// What one call returns.
struct answer {
  std::uint32_t result = 0;
  std::vector<std::uint8_t> reply;
};

// The answers to one command, selector or report id. A single answer repeats
// for ever; a sequence is consumed one entry a call and then answers like a
// drained log.
struct answer_list {
  std::uint64_t key = 0;
  bool sequence = false;
  std::vector<answer> answers;
  std::size_t next = 0;

  const answer& take();
};

struct service_description {
  static constexpr std::size_t no_child = SIZE_MAX;

  std::string name;
  std::string class_name;
  property_value properties;
  std::uint32_t open_result = 0;
  bool null_connection = false;
  std::vector<answer_list> commands;
  std::vector<answer_list> methods;
  std::size_t first_child = no_child;
};

struct hid_description {
  std::uint32_t usage_page = 0;
  std::uint32_t usage = 0;
  bool create = true;
  std::uint32_t open_result = 0;
  std::vector<answer_list> reports;
};

// Services are kept in registry search order: each entry, then its children,
// then the next entry. A depth-first search is then one pass.
struct description {
  std::vector<service_description> services;
  std::vector<hid_description> hid_devices;
};

// The answers keyed `key`, or nullptr.
answer_list* find_answers(std::vector<answer_list>& lists, std::uint64_t key);

struct call_answer {
  std::uint32_t result = 0;
  std::size_t delivered = 0;
};

// One call answered from `list` (nullptr: an unsupported request). On
// success the reply's first min(reply size, capacity) bytes are copied to the
// start of `buffer`; otherwise nothing is.
call_answer answer_call(answer_list* list, void* buffer, std::size_t capacity);

// Every sequence starts again from its first entry.
void rewind_answers(description& phone);

struct parse_result {
  description phone;
  std::string error;  // "" or the one-line message
};

// Readable bytes that a caller may leave after the text it gives
// parse_description, which then reads the text where it is, not a copy.
inline constexpr std::size_t description_padding = 64;

// Checks a description text against the schema and decodes it. `origin`
// names the text in the message. `padded`: description_padding readable
// bytes follow the text.
parse_result parse_description(std::string_view json, std::string_view origin,
                               bool padded = false);

}  // namespace tmxsim
