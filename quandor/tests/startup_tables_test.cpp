#include "quandor/printers.h"
#include "quandor/startup_tables.h"

#include <gtest/gtest.h>

namespace {

TEST(startup_tables, prefixes_and_a_registry_entry_for_each_dump_command) {
  EXPECT_EQ(hex_prefix, "0x");
  EXPECT_EQ(dec_prefix, "0d");
  EXPECT_EQ(dump_registry.size(), 31u);
  for (std::uint32_t command = 0xd0; command <= 0xed; ++command)
    EXPECT_EQ(dump_registry.at(command),
              command == 0xe3 ? print_input_report_errors : print_state_dump) << command;
  EXPECT_EQ(dump_registry.at(0x45), print_transfer_errors);
  EXPECT_EQ(dump_registry[0x46], nullptr);
  EXPECT_EQ(dump_registry.size(), 32u);
  dump_registry.erase(0x46);
}

TEST(startup_tables, name_lookups_insert_an_empty_name_on_a_miss) {
  EXPECT_EQ(click_speed_names[2], "Fast");
  EXPECT_EQ(click_speed_names[3], "");
  EXPECT_EQ(click_speed_names.size(), 4u);
  EXPECT_EQ(button_state_names[15], "LongPressUp");
  EXPECT_EQ(button_state_names[16], "");
  EXPECT_EQ(button_state_names.size(), 17u);
  click_speed_names.erase(3);
  button_state_names.erase(16);
}

}  // namespace
