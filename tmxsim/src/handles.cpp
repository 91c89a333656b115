#include "handles.h"

namespace tmxsim {
namespace {

std::uint32_t handle_of(std::uint32_t slot, std::uint32_t generation) {
  return generation << handle_index_bits | (slot + 1);
}

}  // namespace

std::uint32_t handle_table::add(handle_kind kind, entry_ref entry) {
  std::uint32_t slot = 0;
  if (free_head_ != 0) {
    slot = free_head_ - 1;
    free_head_ = slots_[slot].next_free;
  } else if (slots_.size() < handle_index_mask) {
    slot = static_cast<std::uint32_t>(slots_.size());
    slots_.emplace_back();
  } else {
    return 0;
  }
  slots_[slot].kind = kind;
  slots_[slot].entry = entry;
  ++(kind == handle_kind::entry ? entries_ : connections_);
  return handle_of(slot, slots_[slot].generation);
}

void handle_table::reset() {
  free_head_ = 0;
  for (std::uint32_t slot = static_cast<std::uint32_t>(slots_.size()); slot > 0; --slot) {
    handle_slot& entry = slots_[slot - 1];
    if (entry.kind != handle_kind::free) {
      entry.kind = handle_kind::free;
      entry.generation = next_generation(entry.generation);
    }
    entry.next_free = free_head_;
    free_head_ = slot;
  }
  entries_ = 0;
  connections_ = 0;
}

}  // namespace tmxsim
