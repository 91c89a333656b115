#pragma once

// The one simulated phone of the process and everything the program obtained
// from it (counted as tmxsim/control.h describes under audit_counts). The
// platform is single-threaded, as the tool is.

#include <cstdint>
#include <string>
#include <string_view>

#include "call_log.h"
#include "cf_store.h"
#include "handles.h"
#include "registry.h"
#include "tmxsim/control.h"

namespace tmxsim {

struct platform {
  cf_store cf;
  handle_table handles;
  registry phone;
  call_log log;
  long misuse = 0;
};

// Started before main (and at the latest by the first platform call):
// TMXSIM_DEVICE names the description, the built-in default phone otherwise;
// TMXSIM_LOG names the call log. A description that cannot be used ends the
// process with one line on standard error and status 2.
platform& the_platform();

// Counts a refused call; its log line names the rule.
void count_misuse(platform& state, const char* rule);

// The live object `ref` names, or nullptr; a reference that names nothing
// live counts as misuse (NULL does not).
cf_value* find_live(platform& state, const void* ref);

// As above, and of `kind`: an object of another kind gives nullptr.
cf_value* find_live(platform& state, const void* ref, cf_kind kind);

// The live registry entry that `handle` names, or nullptr; a handle that is
// neither 0 nor a live entry counts as misuse.
const handle_slot* find_entry(platform& state, std::uint32_t handle);

// Replaces the phone and forgets everything handed out. Returns "" or the
// one-line error, after which the phone has no coprocessor.
// The type id of `kind`, logged as what `call` returned.
CFTypeID answer_type_id(const char* call, cf_kind kind);

std::string install_description(platform& state, std::string_view json,
                                 std::string_view origin);

void reset_platform(platform& state);

audit_counts count_audit(platform& state);

}  // namespace tmxsim
