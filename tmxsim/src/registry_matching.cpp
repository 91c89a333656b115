#include <IOKit/IOKitKeys.h>
#include <IOKit/hid/IOHIDKeys.h>

#include <string_view>
#include <unordered_map>

#include "cf_numbers.h"
#include "cf_values.h"
#include "registry.h"

namespace tmxsim {
namespace {

// A matching dictionary taken apart once, before the registry is searched.
struct match_request {
  const cf_value* provider_class = nullptr;
  const cf_value* name = nullptr;
  const cf_value* property_match = nullptr;
  const cf_value* usage_pairs = nullptr;
  bool other_keys = false;  // compared with the properties of the same name
  bool usable = true;       // false: a key that is not a string matches nothing
};

bool is_string(const cf_value* value) {
  return value != nullptr && value->kind == cf_kind::string;
}

match_request take_apart(cf_store& store, const cf_value& matching) {
  match_request request;
  for (const auto& [key, value] : matching.entries) {
    const cf_value* name = store.find(key);
    if (!is_string(name)) {
      request.usable = false;
      continue;
    }
    const cf_value* wanted = store.find(value);
    if (name->text == kIOProviderClassKey)
      request.provider_class = wanted;
    else if (name->text == kIONameMatchKey)
      request.name = wanted;
    else if (name->text == kIOPropertyMatchKey)
      request.property_match = wanted;
    else if (name->text == kIOHIDDeviceUsagePairsKey)
      request.usage_pairs = wanted;
    else
      request.other_keys = true;
    // A key whose value is no object can match nothing.
    if (wanted == nullptr) request.usable = false;
  }
  return request;
}

// A string, or an array of strings of which one must do.
bool text_matches(cf_store& store, const cf_value* wanted, std::string_view text) {
  if (wanted == nullptr) return true;
  if (is_string(wanted)) return wanted->text == text;
  if (wanted->kind != cf_kind::array) return false;
  for (const void* item : wanted->items) {
    const cf_value* choice = store.find(item);
    if (is_string(choice) && choice->text == text) return true;
  }
  return false;
}

// Every key of `wanted` is a property with an equal value.
bool has_properties(cf_store& store, const cf_value* wanted, cf_value& properties) {
  if (wanted == nullptr || wanted->kind != cf_kind::dictionary) return false;
  for (const auto& [key, value] : wanted->entries) {
    const cf_entry* entry = dictionary_entry(store, properties, key);
    if (entry == nullptr || !cf_equal(store, entry->second, value)) return false;
  }
  return true;
}

// IOPropertyMatch: a dictionary, or an array of dictionaries of which one must do.
bool property_match(cf_store& store, const cf_value* wanted, cf_value& properties) {
  if (wanted == nullptr) return true;
  if (wanted->kind != cf_kind::array) return has_properties(store, wanted, properties);
  for (const void* item : wanted->items)
    if (has_properties(store, store.find(item), properties)) return true;
  return false;
}

bool other_keys_match(cf_store& store, const cf_value& matching, cf_value& properties) {
  for (const auto& [key, wanted] : matching.entries) {
    const std::string_view name = store.find(key)->text;
    if (name == kIOProviderClassKey || name == kIONameMatchKey ||
        name == kIOPropertyMatchKey || name == kIOHIDDeviceUsagePairsKey)
      continue;
    const cf_entry* entry = dictionary_entry(store, properties, key);
    if (entry == nullptr || !cf_equal(store, entry->second, wanted)) return false;
  }
  return true;
}

bool service_matches(cf_store& store, const match_request& request,
                     const cf_value& matching, const service_description& service,
                     cf_value& properties) {
  return request.usage_pairs == nullptr &&
         text_matches(store, request.provider_class, service.class_name) &&
         text_matches(store, request.name, service.name) &&
         property_match(store, request.property_match, properties) &&
         (!request.other_keys || other_keys_match(store, matching, properties));
}

// A number of a usage pair: absent matches anything.
bool usage_matches(cf_store& store, cf_value& pair, std::string_view key,
                   std::uint32_t usage) {
  for (const auto& [name, value] : pair.entries) {
    const cf_value* text = store.find(name);
    if (!is_string(text) || text->text != key) continue;
    const cf_value* number = store.find(value);
    return number != nullptr && number->kind == cf_kind::number && number_is(*number, usage);
  }
  return true;
}

bool hid_matches(cf_store& store, const match_request& request,
                 const hid_description& device) {
  if (request.name != nullptr || request.property_match != nullptr || request.other_keys ||
      !text_matches(store, request.provider_class, kIOHIDDeviceKey))
    return false;
  if (request.usage_pairs == nullptr) return true;
  if (request.usage_pairs->kind != cf_kind::array) return false;
  for (const void* item : request.usage_pairs->items) {
    cf_value* pair = store.find(item);
    if (pair != nullptr && pair->kind == cf_kind::dictionary &&
        usage_matches(store, *pair, kIOHIDDeviceUsagePageKey, device.usage_page) &&
        usage_matches(store, *pair, kIOHIDDeviceUsageKey, device.usage))
      return true;
  }
  return false;
}

// `name` is the string `key`: by address when it is the platform's own
// constant for it.
bool is_key(const cf_value& name, const cf_value* own, std::string_view key) {
  return &name == own || name.text == key;
}

std::optional<entry_ref> first_in(const std::unordered_map<std::string_view, std::size_t>& index,
                                  std::string_view text) {
  const auto found = index.find(text);
  if (found == index.end()) return std::nullopt;
  return entry_ref{false, found->second};
}

// No service has the class: the search would take the first HID device, if
// the class is theirs.
[[gnu::noinline]] std::optional<entry_ref> first_of_class(const registry& phone,
                                                          std::string_view name) {
  if (auto service = first_in(phone.first_of_class, name)) return service;
  if (name == kIOHIDDeviceKey && !phone.model.hid_devices.empty()) return entry_ref{true, 0};
  return std::nullopt;
}

// Every entry in search order, each compared with the whole dictionary.
[[gnu::noinline]] std::optional<entry_ref> searched_match(registry& phone, cf_store& store,
                                                          cf_value& matching) {
  const match_request request = take_apart(store, matching);
  if (!request.usable) return std::nullopt;
  const std::vector<service_description>& services = phone.model.services;
  for (std::size_t i = 0; i < services.size(); ++i) {
    if (service_matches(store, request, matching, services[i], *phone.properties[i]))
      return entry_ref{false, i};
  }
  const std::vector<hid_description>& devices = phone.model.hid_devices;
  for (std::size_t i = 0; i < devices.size(); ++i)
    if (hid_matches(store, request, devices[i])) return entry_ref{true, i};
  return std::nullopt;
}

}  // namespace

// The dictionaries IOServiceMatching and IOServiceNameMatching make, one
// string under one key, are answered from the indexes; the tool looks up the
// same class for every record, so the last one is kept.
std::optional<entry_ref> first_match(registry& phone, cf_store& store,
                                     cf_value& matching) {
  if (matching.entries.size() != 1) return searched_match(phone, store, matching);
  const auto& [key, value] = matching.entries.front();
  const cf_value* name = store.find(key);
  const cf_value* wanted = store.find(value);
  if (!is_string(name) || !is_string(wanted)) return searched_match(phone, store, matching);
  if (is_key(*name, phone.class_key, kIOProviderClassKey)) {
    class_lookup& last = phone.last_class;
    if (!last.done || last.name != wanted->text) {
      last.done = true;
      last.name = wanted->text;
      last.found = first_of_class(phone, wanted->text);
    }
    return last.found;
  }
  if (is_key(*name, phone.name_key, kIONameMatchKey))
    return first_in(phone.first_of_name, wanted->text);
  return searched_match(phone, store, matching);
}

}  // namespace tmxsim
