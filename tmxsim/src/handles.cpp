#include "handles.h"

namespace tmxsim {
namespace {

constexpr int index_bits = 20;
constexpr std::uint32_t index_mask = (std::uint32_t{1} << index_bits) - 1;
constexpr std::uint32_t max_generation = 0xfff;

std::uint32_t handle_of(std::uint32_t slot, std::uint32_t generation) {
  return generation << index_bits | (slot + 1);
}

std::uint32_t next_generation(std::uint32_t generation) {
  return generation == max_generation ? 1 : generation + 1;
}

}  // namespace

std::uint32_t handle_table::add(handle_kind kind, entry_ref entry) {
  std::uint32_t slot = 0;
  if (!free_.empty()) {
    slot = free_.back();
    free_.pop_back();
  } else if (slots_.size() < index_mask) {
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

const handle_slot* handle_table::find(std::uint32_t handle) const {
  const std::uint32_t number = handle & index_mask;
  if (number == 0 || number > slots_.size()) return nullptr;
  const handle_slot& slot = slots_[number - 1];
  if (slot.kind == handle_kind::free || slot.generation != handle >> index_bits)
    return nullptr;
  return &slot;
}

void handle_table::remove(std::uint32_t handle) {
  if (find(handle) == nullptr) return;
  const std::uint32_t slot = (handle & index_mask) - 1;
  --(slots_[slot].kind == handle_kind::entry ? entries_ : connections_);
  slots_[slot].kind = handle_kind::free;
  slots_[slot].generation = next_generation(slots_[slot].generation);
  free_.push_back(slot);
}

void handle_table::reset() {
  free_.clear();
  for (std::uint32_t slot = static_cast<std::uint32_t>(slots_.size()); slot > 0; --slot) {
    handle_slot& entry = slots_[slot - 1];
    if (entry.kind != handle_kind::free) {
      entry.kind = handle_kind::free;
      entry.generation = next_generation(entry.generation);
    }
    free_.push_back(slot - 1);
  }
  entries_ = 0;
  connections_ = 0;
}

}  // namespace tmxsim
