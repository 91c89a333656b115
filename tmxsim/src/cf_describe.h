#pragma once

// How the call log shows CoreFoundation references.

#include <string>

#include "cf_store.h"

namespace tmxsim {

// "cf#N" for an object (N counts the objects made since the platform last
// started afresh), a constant string's text in quotes, true, false, NULL, or
// "unknown" for a reference that names no live object.
std::string cf_name(cf_store& store, const void* ref);

// The object with its contents: {"key" = value, ...}, [a, b], "text", 42.
std::string cf_contents(cf_store& store, const void* ref);

}  // namespace tmxsim
