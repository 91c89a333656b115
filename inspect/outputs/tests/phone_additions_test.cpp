// What a capture cannot show, added to its phone, without changing what the
// capture decides.

#include <gtest/gtest.h>

#include <string>

#include "inspect/outputs/phone_additions.h"

namespace inspect {
namespace {

const std::string phone = R"({"services": [
  {"name": "ZOL_zol-button", "properties": {"kept": 1}, "commands": {"215": {"reply": ""}}},
  {"name": "ZOL_profile", "children": [{"name": "ZOL_profiler"}]}],
 "hid_devices": [{"usage_page": 65280, "usage": 32}]})";

const std::string too_deep = "{\"a\": " + std::string(70, '[') + std::string(70, ']') + "}";

struct addition {
  const char* name;
  const char* additions;
  const char* where;  // "" when added
  const char* shown;  // in the fault, or in the phone when added
};

const addition additions[] = {
    {"a_service_id", R"({"services": [{"name": "ZOL_zol-button", "properties": {"service_id": 7}}]})", "",
     R"("service_id": 7)"},
    {"the_phone_property_stands", R"({"services": [{"name": "ZOL_zol-button", "properties": {"kept": 2}}]})",
     "", R"("kept": 1)"},
    {"a_command_not_asked", R"({"services": [{"name": "ZOL_zol-button", "commands": {"300": {}}}]})", "",
     R"("300")"},
    {"a_service_not_looked_for", R"({"services": [{"name": "ZOL_mux"}]})", "", R"("ZOL_mux")"},
    {"a_profiler_sibling", R"({"services": [{"name": "ZOL_profile", "children": [{"name": "spare"}]}]})", "",
     R"("spare")"},
    {"another_hid_device", R"({"hid_devices": [{}, {"usage_page": 1, "usage": 2}]})", "", R"("usage": 2)"},
    {"an_asked_command", R"({"services": [{"name": "ZOL_zol-button", "commands": {"216": {}}}]})",
     "services[0].commands.216", "the harvest asks it"},
    {"an_asked_report", R"({"hid_devices": [{"reports": {"180": {}}}]})", "hid_devices[0].reports.180",
     "the harvest asks it"},
    {"a_missing_service", R"({"services": [{"name": "ZOL_lyn"}]})", "services[0]", "shows it missing"},
    {"a_missing_service_unprefixed", R"({"services": [{"name": "btmspk"}]})", "services[0]", "shows it missing"},
    {"a_clock_pair_by_class", R"({"services": [{"name": "t", "class": "CorvelTMXTimesync"}]})", "services[0]",
     "shows it missing"},
    {"another_class", R"({"services": [{"name": "ZOL_zol-button", "class": "Other"}]})",
     "services[0].class", "the capture decides it"},
    {"children_the_capture_lacks", R"({"services": [{"name": "ZOL_zol-button", "children": []}]})",
     "services[0].children", "without children"},
    {"the_button_hid_device", R"({"hid_devices": [{}, {"usage_page": 65280, "usage": 32}]})", "hid_devices[1]",
     "shows it missing"},
    {"no_name", R"({"services": [{"properties": {}}]})", "services[0]", "\"name\""},
    {"not_an_object", "[]", "top level", "expected an object"},
    {"broken_json", R"({"services": [)", "byte 15", "unexpected end of input"},
    {"number_overflow", R"({"a": 1e99999})", "a value", "number overflow"},
    {"a_usage_in_words", R"({"hid_devices": [{}, {"usage_page": "button", "usage": 32}]})", "", R"("button")"},
    {"too_deep", too_deep.c_str(),
     "top level", "nested more than 64"},
};

class phone_additions : public testing::TestWithParam<addition> {};

TEST_P(phone_additions, add_only_what_the_capture_leaves_open) {
  const addition& c = GetParam();
  phone_description description = phone_description::parse(phone);
  addition_fault fault;
  const bool added = add_to_phone(description, c.additions, fault);
  ASSERT_EQ(added, *c.where == '\0') << fault.where << ": " << fault.message;
  if (added) {
    const std::string text = phone_text(description);
    EXPECT_NE(text.find(c.shown), std::string::npos) << text;
  } else {
    EXPECT_EQ(fault.where, c.where);
    EXPECT_NE(fault.message.find(c.shown), std::string::npos) << fault.message;
  }
}

INSTANTIATE_TEST_SUITE_P(cases, phone_additions, testing::ValuesIn(additions),
                         [](const auto& param_info) { return std::string(param_info.param.name); });

}  // namespace
}  // namespace inspect
