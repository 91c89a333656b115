#pragma once

// The described phone as the platform serves it: the description, with each
// service's properties built once as CoreFoundation objects the platform
// holds, and the search for the entry a matching dictionary selects.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cf_store.h"
#include "description.h"

namespace tmxsim {

// A registry entry: a service, or a HID device (searched after all services).
struct entry_ref {
  bool hid = false;
  std::size_t index = 0;
};

// A class looked up, and what it selects.
struct class_lookup {
  bool done = false;
  std::string name;
  std::optional<entry_ref> found;
};

struct registry {
  description model;
  std::vector<cf_value*> properties;  // one dictionary per service, held by the platform
  // The first service, in search order, of each class and of each name:
  // what a dictionary of one class or one name selects.
  std::unordered_map<std::string_view, std::size_t> first_of_class;
  std::unordered_map<std::string_view, std::size_t> first_of_name;
  // The tool looks up the same class for every record.
  class_lookup last_class;
  // The keys IOServiceMatching and IOServiceNameMatching use, once made.
  cf_value* class_key = nullptr;
  cf_value* name_key = nullptr;
};

// (Re)builds `properties` in `store`, and the indexes, from the model.
void build_properties(registry& phone, cf_store& store);

// The first entry, depth first, that `matching` selects.
std::optional<entry_ref> first_match(registry& phone, cf_store& store,
                                     cf_value& matching);

}  // namespace tmxsim
