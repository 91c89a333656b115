#include "tmxsim/control.h"

#include "embedded_default.h"
#include "platform.h"

namespace tmxsim {

std::string load_description(std::string_view json, std::string_view origin) {
  return install_description(the_platform(), json, origin);
}

void load_default_description() {
  install_description(the_platform(), embedded_default_description(), default_origin, true);
}

std::string_view default_description() { return embedded_default_description(); }

audit_counts audit() { return count_audit(the_platform()); }

void reset_state() { reset_platform(the_platform()); }

}  // namespace tmxsim
