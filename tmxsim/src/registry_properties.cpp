#include "registry.h"
#include "utf8.h"

namespace tmxsim {
namespace {

// The new object is held once: by its container or, at the top, by the
// platform.
const void* build_value(cf_store& store, const property_value& property) {
  using kind = property_value::kind;
  switch (property.type) {
    case kind::boolean:
      return property.boolean ? kCFBooleanTrue : kCFBooleanFalse;
    case kind::number: {
      cf_value& number = store.create(cf_kind::number, false);
      number.number_type = kCFNumberSInt64Type;
      number.integer = property.number;
      return store.ref(number);
    }
    case kind::string: {
      cf_value& text = store.create(cf_kind::string, false);
      text.text = property.text;
      text.ascii = is_ascii(text.text);
      return store.ref(text);
    }
    case kind::array: {
      cf_value& array = store.create(cf_kind::array, false);
      array.retains_values = true;
      for (const property_value& item : property.items)
        array.items.push_back(build_value(store, item));
      return store.ref(array);
    }
    case kind::object: {
      cf_value& dictionary = store.create(cf_kind::dictionary, false);
      dictionary.retains_keys = true;
      dictionary.retains_values = true;
      dictionary.keys_by_value = true;
      for (const auto& [name, item] : property.members) {
        cf_value& key = store.create(cf_kind::string, false);
        key.text = name;
        key.ascii = is_ascii(key.text);
        dictionary.entries.emplace_back(store.ref(key), build_value(store, item));
      }
      return store.ref(dictionary);
    }
  }
  return nullptr;
}

}  // namespace

void build_properties(registry& phone, cf_store& store) {
  phone.properties.clear();
  phone.first_of_class.clear();
  phone.first_of_name.clear();
  phone.last_class = {};
  const std::vector<service_description>& services = phone.model.services;
  for (std::size_t i = 0; i < services.size(); ++i) {
    phone.properties.push_back(store.find(build_value(store, services[i].properties)));
    phone.first_of_class.emplace(services[i].class_name, i);
    phone.first_of_name.emplace(services[i].name, i);
  }
}

}  // namespace tmxsim
