#include "quandor/printers.h"
#include "quandor/startup_tables.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(startup_tables, prefixes_and_a_registry_entry_for_each_dump_command) {
  EXPECT_EQ(hex_prefix, "0x");
  EXPECT_EQ(dec_prefix, "0d");
  EXPECT_EQ(dump_registry.size(), 31u);
  for (std::uint32_t command = 0xd0; command <= 0xed; ++command) {
    const dump_fn expected =
        command == 0xe3 ? print_input_report_errors : print_state_dump;
    EXPECT_EQ(dump_registry.at(command), expected) << command;
  }
  EXPECT_EQ(dump_registry.at(0x45), print_transfer_errors);
  EXPECT_EQ(dump_registry.count(0xcf) + dump_registry.count(0xee), 0u);
}

TEST(startup_tables, registry_lookup_inserts_a_null_printer_on_a_miss) {
  EXPECT_EQ(dump_registry[0x46], nullptr);
  EXPECT_EQ(dump_registry.size(), 32u);
  dump_registry.erase(0x46);
}

TEST(startup_tables, name_tables_in_code_order_and_empty_names_on_a_miss) {
  const std::vector<std::string> speeds = {"Slow", "Medium", "Fast"};
  const std::vector<std::string> states = {
      "SingleDown",  "SingleUp",     "DoubleDown",  "DoubleUp",
      "TripleDown",  "TripleUp",     "SingleTapOn", "SingleTapOff",
      "DoubleTapOn", "DoubleTapOff", "TripleTapOn", "TripleTapOff",
      "DeepDown",    "DeepUp",       "LongPress",   "LongPressUp"};
  ASSERT_EQ(click_speed_names.size(), speeds.size());
  ASSERT_EQ(button_state_names.size(), states.size());
  for (std::uint32_t code = 0; code < speeds.size(); ++code)
    EXPECT_EQ(click_speed_names.at(code), speeds[code]);
  for (std::uint32_t code = 0; code < states.size(); ++code)
    EXPECT_EQ(button_state_names.at(code), states[code]);

  EXPECT_EQ(click_speed_names[3], "");
  EXPECT_EQ(click_speed_names.size(), 4u);
  EXPECT_EQ(button_state_names[16], "");
  click_speed_names.erase(3);
  button_state_names.erase(16);
}

}  // namespace
