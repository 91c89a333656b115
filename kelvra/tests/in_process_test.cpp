// The tool's library, called in this process on a phone of devices/.

#include <IOKit/IOKitLib.h>
#include <gtest/gtest.h>
#include <tmxsim/control.h>

#include <stdexcept>

#include "expected_output.h"
#include "quandor/profile_retrieval.h"
#include "quandor/service.h"

struct in_process : testing::Test {
  static void load(const std::string& phone) {
    ASSERT_EQ(tmxsim::load_description(read_file(KELVRA_TEST_DATA "/" + phone), phone), "");
    tmxsim::reset_state();
  }
  void TearDown() override {
    const tmxsim::audit_counts held = tmxsim::audit();
    EXPECT_EQ(held.io_objects + held.connections + held.cf_objects + held.misuse, 0);
    tmxsim::load_default_description();
  }
};

// The "service_id" property of the service found; -1 when none is found.
static long long found_id(const std::string& designation) {
  const io_service_t service = find_service(designation);
  if (service == 0) return -1;
  long long id = -2;
  if (CFTypeRef value = IORegistryEntryCreateCFProperty(service, CFSTR("service_id"),
                                                        kCFAllocatorDefault, 0)) {
    CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &id);
    CFRelease(value);
  }
  IOObjectRelease(service);
  return id;
}

TEST_F(in_process, service_lookup_tries_the_prefixed_name_then_the_name_then_an_id) {
  ASSERT_NO_FATAL_FAILURE(load("service_designations.json"));
  const std::pair<std::string, long long> designations[] = {
      {"zol-button", 1}, {"plain", 5},
      {"speaker", -1},  // only a service of another class bears the name
      {"0d16", -1},     // a name, not a decimal id
      {"zol\xff", -1},  // no text to match, so no service at all
      {"0x10", 16}, {"16", 16}, {"17", -1},
      // Long names cut the prefixed form only.
      {std::string(130, 'a'), 3}, {std::string(130, 'b'), 4},
  };
  for (const auto& [designation, id] : designations)
    EXPECT_EQ(found_id(designation), id) << designation;
  // Nothing to look up, or a hex prefix without a hex number.
  for (const char* designation : {"", "0x", "0xzz", "0x-1"})
    EXPECT_THROW(find_service(designation), std::invalid_argument) << designation;
}

TEST_F(in_process, profile_raw_mode_prints_labelled_hex_records) {
  ASSERT_NO_FATAL_FAILURE(load("profile_drains_in_several_passes.json"));
  testing::internal::CaptureStdout();
  read_profile_events(0);
  drain_zol_profile(0);
  std::string expected;
  for (const char* sequence : {"01", "02", "03", "0b", "0c", "0d"})
    expected +=
        "prof-event 00000008" + std::string(sequence) + "000000" + std::string(80, '0') + "\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
}
