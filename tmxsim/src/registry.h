#pragma once

// The described phone as the platform serves it: the description, with each
// service's properties built once as CoreFoundation objects the platform
// holds, and the search for the entry a matching dictionary selects.

#include <cstddef>
#include <optional>
#include <vector>

#include "cf_store.h"
#include "description.h"

namespace tmxsim {

// A registry entry: a service, or a HID device (searched after all services).
struct entry_ref {
  bool hid = false;
  std::size_t index = 0;
};

struct registry {
  description model;
  std::vector<cf_value*> properties;  // one dictionary per service, held by the platform
};

// (Re)builds `properties` in `store` from the model.
void build_properties(registry& phone, cf_store& store);

// The first entry, depth first, that `matching` selects.
std::optional<entry_ref> first_match(registry& phone, cf_store& store,
                                     cf_value& matching);

}  // namespace tmxsim
