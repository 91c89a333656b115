#include "cf_store.h"

#include <algorithm>

#include "utf8.h"

namespace tmxsim {
namespace {

constexpr std::size_t first_chunk_size = 256;
constexpr std::size_t recent_constant_count = 32;
// Recycled slots keep their buffers for the next object, up to this size.
constexpr std::size_t kept_capacity = 4096;

template <typename container>
void empty_out(container& items) {
  if (items.capacity() > kept_capacity)
    container().swap(items);
  else
    items.clear();
}

void clear_slot(cf_value& value) {
  value.kind = cf_kind::boolean;
  value.live = false;
  value.constant = false;
  value.is_mutable = false;
  value.retains_keys = false;
  value.retains_values = false;
  value.keys_by_value = false;
  value.serial = 0;
  value.owned = 0;
  value.held = 0;
  value.boolean = false;
  value.number_type = CFNumberType{};
  value.is_float = false;
  value.integer = 0;
  value.real = 0;
  empty_out(value.text);
  value.ascii = true;
  empty_out(value.items);
  empty_out(value.entries);
  value.hid_index = 0;
  value.hid_open = false;
}

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

cf_value& cf_store::take_slot() {
  if (free_.empty()) {
    const std::size_t size =
        chunks_.empty() ? first_chunk_size : chunks_.back().size * 2;
    chunks_.push_back({std::make_unique<cf_value[]>(size), size});
    cf_value* slots = chunks_.back().slots.get();
    for (std::size_t i = size; i > 0; --i) free_.push_back(&slots[i - 1]);
  }
  cf_value* value = free_.back();
  free_.pop_back();
  return *value;
}

cf_value& cf_store::create(cf_kind kind, bool owned) {
  cf_value& value = take_slot();
  value.kind = kind;
  value.live = true;
  value.serial = next_serial_++;
  if (owned) {
    value.owned = 1;
    ++owned_;
  } else {
    value.held = 1;
  }
  return value;
}

cf_value* cf_store::find(const void* ref) {
  if (ref == kCFBooleanTrue) return true_;
  if (ref == kCFBooleanFalse) return false_;
  // Addresses are compared as numbers: `ref` may point anywhere, or nowhere.
  const auto address = reinterpret_cast<std::uintptr_t>(ref);
  for (auto it = chunks_.rbegin(); it != chunks_.rend(); ++it) {
    const auto first = reinterpret_cast<std::uintptr_t>(it->slots.get());
    if (address < first) continue;
    const std::uintptr_t offset = address - first;
    if (offset >= it->size * sizeof(cf_value)) continue;
    if (offset % sizeof(cf_value) != 0) return nullptr;
    cf_value& value = it->slots[offset / sizeof(cf_value)];
    return value.live ? &value : nullptr;
  }
  return nullptr;
}

const void* cf_store::ref(const cf_value& value) const {
  if (&value == true_) return kCFBooleanTrue;
  if (&value == false_) return kCFBooleanFalse;
  return &value;
}

cf_value& cf_store::constant_string(const char* text) {
  for (const auto& [address, value] : recent_constants_)
    if (address == text && value->text == text) return *value;

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
  if (recent_constants_.size() < recent_constant_count)
    recent_constants_.emplace_back(text, value);
  else
    recent_constants_[next_recent_++ % recent_constant_count] = {text, value};
  return *value;
}

void cf_store::retain_owned(cf_value& value) {
  if (value.constant) return;
  ++value.owned;
  ++owned_;
}

bool cf_store::release_owned(cf_value& value) {
  if (value.constant) return true;
  if (value.owned == 0) return false;
  --value.owned;
  --owned_;
  if (value.owned == 0 && value.held == 0) destroy(value);
  return true;
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
void cf_store::destroy(cf_value& first) {
  doomed_.push_back(&first);
  while (!doomed_.empty()) {
    cf_value& value = *doomed_.back();
    doomed_.pop_back();
    const auto drop = [this](const void* element) {
      cf_value* held = find(element);
      if (held == nullptr || held->constant || held->held == 0) return;
      if (--held->held == 0 && held->owned == 0) doomed_.push_back(held);
    };
    if (value.retains_values)
      for (const void* item : value.items) drop(item);
    for (const auto& [key, item] : value.entries) {
      if (value.retains_keys) drop(key);
      if (value.retains_values) drop(item);
    }
    clear_slot(value);
    free_.push_back(&value);
  }
}

void cf_store::reset() {
  free_.clear();
  for (auto it = chunks_.rbegin(); it != chunks_.rend(); ++it) {
    for (std::size_t i = it->size; i > 0; --i) {
      cf_value& value = it->slots[i - 1];
      if (value.live && value.constant) continue;
      if (value.live) clear_slot(value);
      free_.push_back(&value);
    }
  }
  owned_ = 0;
  next_serial_ = 1;
}

}  // namespace tmxsim
