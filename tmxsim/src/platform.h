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

// Set once the platform is started: what the_platform() returns without a call.
extern platform* started_platform __attribute__((visibility("hidden")));

// Starts the platform, or ends the process; see the_platform().
platform& start_the_platform();

// Started before main (and at the latest by the first platform call):
// TMXSIM_DEVICE names the description, the built-in default phone otherwise;
// TMXSIM_LOG names the call log. A description that cannot be used ends the
// process with one line on standard error and status 2.
inline platform& the_platform() {
  if (started_platform != nullptr) return *started_platform;
  return start_the_platform();
}

// The platform when it is started and its log is off, otherwise nullptr.
// The calls the tool makes for every record take this fast path, with their
// work inlined; the rest, with the logging, is out of line.
inline platform* quiet_platform() {
  platform* state = started_platform;
  return state != nullptr && !state->log.on() ? state : nullptr;
}

// Counts a refused call; its log line names the rule.
void count_misuse(platform& state, const char* rule);

cf_value* find_live_elsewhere(platform& state, const void* ref);

// The live object `ref` names, or nullptr; a reference that names nothing
// live counts as misuse (NULL does not).
inline cf_value* find_live(platform& state, const void* ref) {
  if (cf_value* value = state.cf.find_quickly(ref)) return value;
  return find_live_elsewhere(state, ref);
}

// As above, and of `kind`: an object of another kind gives nullptr.
inline cf_value* find_live(platform& state, const void* ref, cf_kind kind) {
  cf_value* value = find_live(state, ref);
  return value != nullptr && value->kind == kind ? value : nullptr;
}

// The live registry entry that `handle` names, or nullptr; a handle that is
// neither 0 nor a live entry counts as misuse.
inline const handle_slot* find_entry(platform& state, std::uint32_t handle) {
  const handle_slot* slot = state.handles.find(handle);
  if (slot != nullptr && slot->kind == handle_kind::entry) return slot;
  if (handle != 0) count_misuse(state, "not a live registry entry");
  return nullptr;
}

void log_type_id(platform& state, const char* call, CFTypeID id);

// The type id of `kind`, logged as what `call` returned.
inline CFTypeID answer_type_id(const char* call, cf_kind kind) {
  platform& state = the_platform();
  const CFTypeID id = type_id(kind);
  if (state.log.on()) log_type_id(state, call, id);
  return id;
}

// Replaces the phone and forgets everything handed out. Returns "" or the
// one-line error, after which the phone has no coprocessor. `padded` as for
// parse_description.
std::string install_description(platform& state, std::string_view json,
                                 std::string_view origin, bool padded = false);

void reset_platform(platform& state);

audit_counts count_audit(platform& state);

}  // namespace tmxsim
