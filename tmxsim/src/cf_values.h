#pragma once

// What CoreFoundation objects mean: equality and the contents of containers.

#include <utility>

#include "cf_store.h"

namespace tmxsim {

// CFEqual: the same object, or the same kind with equal contents (numbers by
// value, whatever their types).
bool cf_equal(cf_store& store, const void* a, const void* b);

using cf_entry = std::pair<const void*, const void*>;

cf_entry* entry_by_value(cf_store& store, cf_value& dictionary, const void* key);

// The entry stored under `key`, or nullptr. The same key object is the
// common case: it is looked for before anything is compared.
inline cf_entry* dictionary_entry(cf_store& store, cf_value& dictionary, const void* key) {
  for (cf_entry& entry : dictionary.entries)
    if (entry.first == key) return &entry;
  return dictionary.keys_by_value ? entry_by_value(store, dictionary, key) : nullptr;
}

enum class put_mode { set, add_if_absent };

// Stores `value` under `key`, retaining and releasing as the dictionary's
// callbacks ask.
void dictionary_put(cf_store& store, cf_value& dictionary, const void* key,
                    const void* value, put_mode mode);

void array_append(cf_store& store, cf_value& array, const void* value);

// Gives `copy` the contents and callbacks of `original`.
void copy_contents(cf_store& store, const cf_value& original, cf_value& copy);

}  // namespace tmxsim
