#pragma once

// The texts of kernel results as the phone's build holds them: per system
// its subsystems, per subsystem its texts in the order of the codes.

#include <array>
#include <span>

namespace tmxsim {

// Indexed by code; a code past the end has no text of its own.
using error_code_texts = std::span<const char* const>;

struct error_system {
  const char* unknown_subsystem = nullptr;  // null: the slot is empty
  std::span<const error_code_texts> subsystems;  // indexed by subsystem number
};

extern const char unknown_error_code[];

// One slot for each of the 64 possible system numbers.
extern const std::array<error_system, 64> error_systems;

}  // namespace tmxsim
