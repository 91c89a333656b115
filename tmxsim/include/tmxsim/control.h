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

// What the program obtained from the platform and still holds. It is the
// audit line that TMXSIM_LOG ends with, and all 0 for a clean run:
//   io_objects   registry handles from IOServiceGetMatchingService and
//                IORegistryEntryGetChildEntry not yet given to IOObjectRelease;
//   connections  connections from IOServiceOpen not yet closed (by
//                IOServiceClose, or IOObjectRelease);
//   cf_objects   CoreFoundation references the program owns: one for each
//                object a Create or Copy call, IOServiceMatching,
//                IOServiceNameMatching, IORegistryEntryCreateCFProperty or
//                IOHIDDeviceCreate returned and one for each CFRetain, less one
//                for each CFRelease and each dictionary that
//                IOServiceGetMatchingService consumed. CFSTR strings and the
//                booleans never count, nor what the platform holds itself (the
//                registry, and what containers retain);
//   misuse       calls that broke a rule and were refused: releasing an
//                unknown or already released handle or object, releasing an
//                object more often than the program owns it, calling on a
//                closed connection, using an object or handle that is not live,
//                changing an immutable object, an index out of range.
struct audit_counts {
  long io_objects = 0;
  long connections = 0;
  long cf_objects = 0;
  long misuse = 0;
};

// What the program holds now.
audit_counts audit();

// Forgets every handle, connection and CF object handed out and zeroes the
// counters; the description stays.
void reset_state();

}  // namespace tmxsim

#endif
