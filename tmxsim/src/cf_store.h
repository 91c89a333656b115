#pragma once

// The CoreFoundation objects of the simulated platform and their lifetimes.
//
// Objects live in slots that are recycled but never given back while the
// platform runs, so every reference the program passes in is checked against
// the live slots without reading through it: a stale or foreign reference is
// found out, never followed.
//
// Each object counts two kinds of references: those the program owns (from
// a Create or Copy call, IORegistryEntryCreateCFProperty or CFRetain; these
// are what the audit counts) and those held inside the platform (by the
// registry or by a container made with the CF type callbacks). An object is
// recycled when both reach zero. Constants (CFSTR strings, the two booleans)
// are never recycled and never counted.

#include <CoreFoundation/CoreFoundation.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tmxsim {

enum class cf_kind : std::uint8_t {
  boolean,
  number,
  string,
  array,
  dictionary,
  hid_device
};

// The CFTypeID of each kind.
constexpr CFTypeID type_id(cf_kind kind) { return static_cast<CFTypeID>(kind) + 1; }

// The plain fields of an object, apart so that a recycled slot gets them
// back at one go.
struct cf_scalars {
  cf_kind kind = cf_kind::boolean;
  bool live = false;
  bool constant = false;
  bool is_mutable = false;
  bool retains_keys = false;
  bool retains_values = false;
  bool keys_by_value = false;  // keys compared with CFEqual rather than by address
  std::uint64_t serial = 0;    // names the object in the call log
  long owned = 0;
  long held = 0;

  bool boolean = false;
  CFNumberType number_type{};  // canonical: SInt8/16/32/64 or Float32/64
  bool is_float = false;
  std::int64_t integer = 0;
  double real = 0;

  bool ascii = true;  // of `text`

  std::size_t hid_index = 0;
  bool hid_open = false;
};

struct cf_value : cf_scalars {
  std::string text;  // UTF-8
  std::vector<const void*> items;
  std::vector<std::pair<const void*, const void*>> entries;  // key, value

  // Of a slot not live: the next free one, or the next to be destroyed.
  cf_value* next = nullptr;
};

class cf_store {
 public:
  cf_store();
  cf_store(const cf_store&) = delete;
  cf_store& operator=(const cf_store&) = delete;

  // A new object. `owned`: the program receives the reference; otherwise the
  // platform or a container holds it.
  cf_value& create(cf_kind kind, bool owned) {
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

  // The live object that `ref` names, or nullptr.
  cf_value* find(const void* ref) {
    if (cf_value* value = find_quickly(ref)) return value;
    return find_elsewhere(ref);
  }

  // The same when the object is in the chunk of the one found last, as
  // nearly every one is; otherwise nullptr, which tells nothing. Addresses
  // are compared as numbers: `ref` may point anywhere.
  cf_value* find_quickly(const void* ref) const {
    const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(ref) - last_first_;
    return offset < last_bytes_ ? slot_at(ref, offset) : nullptr;
  }

  // The reference the program sees for `value`.
  const void* ref(const cf_value& value) const {
    if (&value == true_) return kCFBooleanTrue;
    if (&value == false_) return kCFBooleanFalse;
    return &value;
  }

  // The one immortal string for `text` (CFSTR). CFSTR is evaluated on every
  // use, so the string is found by the literal's address first. The text at
  // an address may change (a buffer rather than a literal): a hint holds only
  // while the text is the same.
  cf_value& constant_string(const char* text) {
    const auto address = reinterpret_cast<std::uintptr_t>(text);
    constant_hint& hint = constant_hints_[(address ^ (address >> 7)) % constant_hint_count];
    if (hint.text == text && std::strcmp(hint.value->text.c_str(), text) == 0)
      return *hint.value;
    return unhinted_constant(text, hint);
  }

  void retain_owned(cf_value& value) {
    if (value.constant) return;
    ++value.owned;
    ++owned_;
  }

  // False, and nothing happens, when the program holds no reference.
  bool release_owned(cf_value& value) {
    if (value.constant) return true;
    if (value.owned == 0) return false;
    --value.owned;
    --owned_;
    if (value.owned == 0 && value.held == 0) {
      // Most objects hold nothing: they need not go through destroy().
      if (value.items.empty() && value.entries.empty())
        recycle(value);
      else
        destroy(value);
    }
    return true;
  }

  // What containers do with their elements; foreign references are ignored.
  void retain_held(const void* ref);
  void release_held(const void* ref);

  long owned_references() const { return owned_; }

  // Forgets every object except the constants.
  void reset();

 private:
  struct chunk {
    std::unique_ptr<cf_value[]> slots;
    std::size_t size = 0;
  };

  // A CFSTR literal by address, with the constant made for it.
  struct constant_hint {
    const char* text = nullptr;
    cf_value* value = nullptr;
  };

  static constexpr std::size_t constant_hint_count = 64;

  // `ref` lies `offset` bytes into a chunk: the object there, if `ref` names
  // its start and it is live.
  static cf_value* slot_at(const void* ref, std::uintptr_t offset) {
    if (offset % sizeof(cf_value) != 0) return nullptr;
    auto* value = static_cast<cf_value*>(const_cast<void*>(ref));
    return value->live ? value : nullptr;
  }

  cf_value* find_elsewhere(const void* ref);
  cf_value& unhinted_constant(const char* text, constant_hint& hint);

  cf_value& take_slot() {
    if (free_ == nullptr) add_chunk();
    cf_value* value = free_;
    free_ = value->next;
    return *value;
  }

  // Frees a slot: it is the first taken again.
  void give_back(cf_value& value) {
    value.next = free_;
    free_ = &value;
  }

  // Recycled slots keep their buffers for the next object, up to this size.
  static constexpr std::size_t kept_capacity = 4096;

  template <typename container>
  static void empty_out(container& items) {
    if (items.capacity() > kept_capacity)
      container().swap(items);
    else
      items.clear();
  }

  static void clear_slot(cf_value& value) {
    static constexpr cf_scalars blank{};
    static_cast<cf_scalars&>(value) = blank;
    empty_out(value.text);
    empty_out(value.items);
    empty_out(value.entries);
  }

  void recycle(cf_value& value) {
    clear_slot(value);
    give_back(value);
  }

  void add_chunk();
  void destroy(cf_value& value);

  std::vector<chunk> chunks_;
  // The chunk find() tries first: its first slot's address and its size.
  std::uintptr_t last_first_ = 0;
  std::uintptr_t last_bytes_ = 0;
  // The free slots, linked through cf_value::next: freeing never allocates.
  cf_value* free_ = nullptr;
  std::map<std::string, cf_value*, std::less<>> constants_;
  std::array<constant_hint, constant_hint_count> constant_hints_{};
  cf_value* true_ = nullptr;
  cf_value* false_ = nullptr;
  long owned_ = 0;
  std::uint64_t next_serial_ = 1;
};

}  // namespace tmxsim
