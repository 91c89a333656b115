#include <IOKit/IOKitLib.h>
#include <gtest/gtest.h>
#include <tmxsim/control.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "quandor/service.h"

namespace {

class service_lookup : public testing::Test {
 protected:
  void SetUp() override {
    std::ifstream file(std::string(KELVRA_TEST_DATA) + "/service_designations.json");
    std::stringstream json;
    json << file.rdbuf();
    ASSERT_EQ(tmxsim::load_description(json.str(), "service_designations.json"), "");
    tmxsim::reset_state();
  }
  void TearDown() override {
    const tmxsim::audit_counts held = tmxsim::audit();
    EXPECT_EQ(held.io_objects + held.connections + held.cf_objects + held.misuse, 0);
    tmxsim::load_default_description();
  }

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
};

TEST_F(service_lookup, names_are_tried_with_the_prefix_first) {
  EXPECT_EQ(found_id("zol-button"), 1);
  EXPECT_EQ(found_id("plain"), 5);
  EXPECT_EQ(found_id("speaker"), -1);  // only a service of another class bears the name
  EXPECT_EQ(found_id("0d16"), -1);     // a name, not a decimal id
  EXPECT_EQ(found_id("zol\xff"), -1);  // no text to match, so no service at all
}

TEST_F(service_lookup, ids_are_read_in_hex_and_decimal) {
  EXPECT_EQ(found_id("0x10"), 16);
  EXPECT_EQ(found_id("16"), 16);
  EXPECT_EQ(found_id("17"), -1);
}

TEST_F(service_lookup, long_names_cut_the_prefixed_form_only) {
  EXPECT_EQ(found_id(std::string(130, 'a')), 3);
  EXPECT_EQ(found_id(std::string(130, 'b')), 4);
}

TEST_F(service_lookup, an_empty_designation_raises) {
  EXPECT_THROW(find_service(""), std::invalid_argument);
}

TEST_F(service_lookup, a_hex_prefix_without_a_hex_number_raises) {
  EXPECT_THROW(find_service("0x"), std::invalid_argument);
  EXPECT_THROW(find_service("0xzz"), std::invalid_argument);
  EXPECT_THROW(find_service("0x-1"), std::invalid_argument);
}

}  // namespace
