#pragma once

// The 32-bit handles of registry entries and connections.
//
// A handle is a slot number and the slot's generation, so a handle that was
// released, or never handed out, is known for what it is even after its slot
// is reused.

#include <cstdint>
#include <vector>

#include "registry.h"

namespace tmxsim {

enum class handle_kind : std::uint8_t { free, entry, connection };

struct handle_slot {
  handle_kind kind = handle_kind::free;
  std::uint32_t generation = 1;
  entry_ref entry;
};

class handle_table {
 public:
  // A new handle; 0 when every slot is taken.
  std::uint32_t add(handle_kind kind, entry_ref entry);

  // The live slot that `handle` names, or nullptr.
  const handle_slot* find(std::uint32_t handle) const;

  void remove(std::uint32_t handle);

  long count(handle_kind kind) const {
    return kind == handle_kind::entry ? entries_ : kind == handle_kind::connection ? connections_ : 0;
  }

  // Forgets every handle; none handed out so far is valid afterwards.
  void reset();

 private:
  std::vector<handle_slot> slots_;
  std::vector<std::uint32_t> free_;
  long entries_ = 0;
  long connections_ = 0;
};

}  // namespace tmxsim
