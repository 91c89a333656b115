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

#include <cstddef>
#include <cstdint>
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

struct cf_value {
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

  std::string text;  // UTF-8
  bool ascii = true;

  std::vector<const void*> items;
  std::vector<std::pair<const void*, const void*>> entries;  // key, value

  std::size_t hid_index = 0;
  bool hid_open = false;
};

class cf_store {
 public:
  cf_store();
  cf_store(const cf_store&) = delete;
  cf_store& operator=(const cf_store&) = delete;

  // A new object. `owned`: the program receives the reference; otherwise the
  // platform or a container holds it.
  cf_value& create(cf_kind kind, bool owned);

  // The live object that `ref` names, or nullptr.
  cf_value* find(const void* ref);

  // The reference the program sees for `value`.
  const void* ref(const cf_value& value) const;

  // The one immortal string for `text` (CFSTR).
  cf_value& constant_string(const char* text);

  void retain_owned(cf_value& value);
  // False, and nothing happens, when the program holds no reference.
  bool release_owned(cf_value& value);

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

  cf_value& take_slot();
  void destroy(cf_value& value);

  std::vector<chunk> chunks_;
  std::vector<cf_value*> free_;
  std::vector<cf_value*> doomed_;
  std::map<std::string, cf_value*, std::less<>> constants_;
  // CFSTR is evaluated on every use; the same literal is found by address.
  std::vector<std::pair<const char*, cf_value*>> recent_constants_;
  std::size_t next_recent_ = 0;
  cf_value* true_ = nullptr;
  cf_value* false_ = nullptr;
  long owned_ = 0;
  std::uint64_t next_serial_ = 1;
};

}  // namespace tmxsim
