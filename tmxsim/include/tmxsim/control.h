#ifndef TMXSIM_CONTROL_H
#define TMXSIM_CONTROL_H

// Control of the simulated phone, for tests, fuzzers and benchmarks. Not part
// of the real platform: the tool itself never includes this.

#include <string>
#include <string_view>

namespace tmxsim {

// Replaces the phone with the description `json`; `origin` names it in
// errors. Returns "" on success, otherwise the one-line error (the phone is
// then left without a coprocessor, as if described by {}).
std::string load_description(std::string_view json, std::string_view origin);

// Replaces the phone with the built-in default phone.
void load_default_description();

// The built-in default phone's description text.
std::string_view default_description();

struct audit_counts {
  long io_objects = 0;
  long connections = 0;
  long cf_objects = 0;
  long misuse = 0;
};

// What the program holds now, counted as the audit line counts it.
audit_counts audit();

// Forgets every handle, connection and CF object handed out and zeroes the
// counters; the description stays.
void reset_state();

}  // namespace tmxsim

#endif
