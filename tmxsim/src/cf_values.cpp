#include "cf_values.h"

#include "cf_numbers.h"

namespace tmxsim {
namespace {

// Deeper contents compare unequal rather than exhaust the stack.
constexpr int max_compare_depth = 64;

bool equal_at_depth(cf_store& store, const void* a, const void* b, int depth);

bool same_contents(cf_store& store, cf_value& x, cf_value& y, int depth) {
  switch (x.kind) {
    case cf_kind::boolean:
      return x.boolean == y.boolean;
    case cf_kind::number:
      return numbers_equal(x, y);
    case cf_kind::string:
      return x.text == y.text;
    case cf_kind::array:
      if (x.items.size() != y.items.size()) return false;
      for (std::size_t i = 0; i < x.items.size(); ++i)
        if (!equal_at_depth(store, x.items[i], y.items[i], depth + 1)) return false;
      return true;
    case cf_kind::dictionary:
      if (x.entries.size() != y.entries.size()) return false;
      for (const auto& [key, value] : x.entries) {
        const cf_entry* other = dictionary_entry(store, y, key);
        if (other == nullptr || !equal_at_depth(store, value, other->second, depth + 1))
          return false;
      }
      return true;
    case cf_kind::hid_device:
      return false;
  }
  return false;
}

bool equal_at_depth(cf_store& store, const void* a, const void* b, int depth) {
  if (a == b) return true;
  if (depth > max_compare_depth) return false;
  cf_value* x = store.find(a);
  cf_value* y = store.find(b);
  return x != nullptr && y != nullptr && x->kind == y->kind &&
         same_contents(store, *x, *y, depth);
}

}  // namespace

bool cf_equal(cf_store& store, const void* a, const void* b) {
  return equal_at_depth(store, a, b, 0);
}

// For dictionaries whose keys compare with CFEqual, once no key is `key` itself.
cf_entry* entry_by_value(cf_store& store, cf_value& dictionary, const void* key) {
  cf_value* wanted = store.find(key);
  if (wanted == nullptr) return nullptr;
  for (cf_entry& entry : dictionary.entries) {
    cf_value* have = store.find(entry.first);
    if (have == nullptr || have->kind != wanted->kind ||
        !same_contents(store, *have, *wanted, 0))
      continue;
    // An equal constant (CFSTR) takes the key's place, so the next lookup
    // with it is an address comparison. Nothing can tell the keys apart.
    if (wanted->constant && !have->constant) {
      entry.first = key;
      if (dictionary.retains_keys) store.release_held(store.ref(*have));
    }
    return &entry;
  }
  return nullptr;
}

void dictionary_put(cf_store& store, cf_value& dictionary, const void* key,
                    const void* value, put_mode mode) {
  if (cf_entry* entry = dictionary_entry(store, dictionary, key)) {
    if (mode == put_mode::add_if_absent) return;
    const void* old = entry->second;
    if (dictionary.retains_values) store.retain_held(value);
    entry->second = value;
    if (dictionary.retains_values) store.release_held(old);
    return;
  }
  if (dictionary.retains_keys) store.retain_held(key);
  if (dictionary.retains_values) store.retain_held(value);
  dictionary.entries.emplace_back(key, value);
}

void array_append(cf_store& store, cf_value& array, const void* value) {
  if (array.retains_values) store.retain_held(value);
  array.items.push_back(value);
}

void copy_contents(cf_store& store, const cf_value& original, cf_value& copy) {
  copy.retains_keys = original.retains_keys;
  copy.retains_values = original.retains_values;
  copy.keys_by_value = original.keys_by_value;
  copy.items = original.items;
  copy.entries = original.entries;
  for (const void* item : copy.items)
    if (copy.retains_values) store.retain_held(item);
  for (const auto& [key, value] : copy.entries) {
    if (copy.retains_keys) store.retain_held(key);
    if (copy.retains_values) store.retain_held(value);
  }
}

}  // namespace tmxsim
