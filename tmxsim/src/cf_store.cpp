#include "cf_store.h"

#include <string_view>

#include "utf8.h"

namespace tmxsim {
namespace {

constexpr std::size_t first_chunk_size = 256;

}  // namespace

cf_store::cf_store() {
  for (cf_value** boolean : {&true_, &false_}) {
    cf_value& value = take_slot();
    value.live = true;
    value.constant = true;
    value.boolean = boolean == &true_;
    *boolean = &value;
  }
}

void cf_store::add_chunk() {
  const std::size_t size = chunks_.empty() ? first_chunk_size : chunks_.back().size * 2;
  chunks_.push_back({std::make_unique<cf_value[]>(size), size});
  cf_value* slots = chunks_.back().slots.get();
  for (std::size_t i = size; i > 0; --i) give_back(slots[i - 1]);
}

cf_value* cf_store::find_elsewhere(const void* ref) {
  if (ref == kCFBooleanTrue) return true_;
  if (ref == kCFBooleanFalse) return false_;
  const auto address = reinterpret_cast<std::uintptr_t>(ref);
  for (auto it = chunks_.rbegin(); it != chunks_.rend(); ++it) {
    const auto first = reinterpret_cast<std::uintptr_t>(it->slots.get());
    const std::uintptr_t bytes = it->size * sizeof(cf_value);
    const std::uintptr_t offset = address - first;
    if (offset >= bytes) continue;
    last_first_ = first;
    last_bytes_ = bytes;
    return slot_at(ref, offset);
  }
  return nullptr;
}

cf_value& cf_store::unhinted_constant(const char* text, constant_hint& hint) {
  cf_value* value = nullptr;
  if (const auto known = constants_.find(std::string_view(text));
      known != constants_.end()) {
    value = known->second;
  } else {
    value = &take_slot();
    value->kind = cf_kind::string;
    value->live = true;
    value->constant = true;
    value->text = text;
    value->ascii = is_ascii(value->text);
    constants_.emplace(value->text, value);
  }
  hint = {text, value};
  return *value;
}

void cf_store::retain_held(const void* ref) {
  cf_value* value = find(ref);
  if (value != nullptr && !value->constant) ++value->held;
}

void cf_store::release_held(const void* ref) {
  cf_value* value = find(ref);
  if (value == nullptr || value->constant || value->held == 0) return;
  if (--value->held == 0 && value->owned == 0) destroy(*value);
}

// Without recursion: a deeply nested container must not exhaust the stack.
// The objects still to destroy are linked through cf_value::next.
// The elements of a container that retains them are live objects of this
// store or the booleans: each was found live when it went in and is held
// since. So they are reached directly rather than searched for.
void cf_store::destroy(cf_value& first) {
  cf_value* doomed = &first;
  first.next = nullptr;
  const auto drop = [&doomed](const void* element) {
    if (element == kCFBooleanTrue || element == kCFBooleanFalse) return;
    cf_value& held = *static_cast<cf_value*>(const_cast<void*>(element));
    if (held.constant || held.held == 0) return;
    if (--held.held == 0 && held.owned == 0) {
      held.next = doomed;
      doomed = &held;
    }
  };
  while (doomed != nullptr) {
    cf_value& value = *doomed;
    doomed = value.next;
    if (value.retains_values)
      for (const void* item : value.items) drop(item);
    if (value.retains_keys || value.retains_values) {
      for (const auto& [key, item] : value.entries) {
        if (value.retains_keys) drop(key);
        if (value.retains_values) drop(item);
      }
    }
    recycle(value);
  }
}

void cf_store::reset() {
  free_ = nullptr;
  for (auto it = chunks_.rbegin(); it != chunks_.rend(); ++it) {
    for (std::size_t i = it->size; i > 0; --i) {
      cf_value& value = it->slots[i - 1];
      if (value.live && value.constant) continue;
      if (value.live) clear_slot(value);
      give_back(value);
    }
  }
  owned_ = 0;
  next_serial_ = 1;
}

}  // namespace tmxsim
