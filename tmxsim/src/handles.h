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

constexpr int handle_index_bits = 20;
constexpr std::uint32_t handle_index_mask = (std::uint32_t{1} << handle_index_bits) - 1;

enum class handle_kind : std::uint8_t { free, entry, connection };

struct handle_slot {
  handle_kind kind = handle_kind::free;
  std::uint32_t generation = 1;
  std::uint32_t next_free = 0;  // of a free slot: the next free one, by number
  entry_ref entry;
};

class handle_table {
 public:
  // A new handle; 0 when every slot is taken.
  std::uint32_t add(handle_kind kind, entry_ref entry);

  // The live slot that `handle` names, or nullptr.
  const handle_slot* find(std::uint32_t handle) const {
    const std::uint32_t number = live_number(handle);
    return number != 0 ? &slots_[number - 1] : nullptr;
  }

  // False, and nothing happens, when `handle` names no live slot.
  bool remove(std::uint32_t handle) {
    const std::uint32_t number = live_number(handle);
    if (number == 0) return false;
    handle_slot& slot = slots_[number - 1];
    --(slot.kind == handle_kind::entry ? entries_ : connections_);
    slot.kind = handle_kind::free;
    slot.generation = next_generation(slot.generation);
    slot.next_free = free_head_;
    free_head_ = number;
    return true;
  }

  long count(handle_kind kind) const {
    return kind == handle_kind::entry ? entries_ : kind == handle_kind::connection ? connections_ : 0;
  }

  // Forgets every handle; none handed out so far is valid afterwards.
  void reset();

 private:
  static std::uint32_t next_generation(std::uint32_t generation) {
    return generation == 0xfff ? 1 : generation + 1;
  }

  // The number (index + 1) of the live slot `handle` names, or 0.
  std::uint32_t live_number(std::uint32_t handle) const {
    const std::uint32_t number = handle & handle_index_mask;
    if (number == 0 || number > slots_.size()) return 0;
    const handle_slot& slot = slots_[number - 1];
    if (slot.kind == handle_kind::free || slot.generation != handle >> handle_index_bits)
      return 0;
    return number;
  }

  std::vector<handle_slot> slots_;
  // The number of the free slot handed out next (0: none); released slots go
  // first, the most recent first. The list is kept in the slots, so that a
  // release never allocates.
  std::uint32_t free_head_ = 0;
  long entries_ = 0;
  long connections_ = 0;
};

}  // namespace tmxsim
