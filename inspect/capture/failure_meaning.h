#pragma once

// What a failure line of a capture means, for people: which request it
// belongs to, what went wrong and what the capture lacks because of it.

#include <string>
#include <string_view>

#include "inspect/capture/capture_model.h"

namespace inspect {

// "service_missing", ...: stable words for tools.
std::string_view kind_key(failure_kind kind) noexcept;
// "the service is not on the phone", ...
std::string_view kind_label(failure_kind kind) noexcept;
// One sentence: the request, what went wrong, its result and text if it
// carries one, and what is missing as a consequence.
std::string failure_meaning(const failure_line& failure);

}  // namespace inspect
