// Names of categories, components and events: the table lookup and the
// rules by which each decoder picks its table.

#include <gtest/gtest.h>

#include <ostream>

#include "liblog_zol/profile_decoder.h"

namespace zol {
inline void PrintTo(const name_text& text, std::ostream* out) { *out << text.view(); }
}  // namespace zol

namespace {

using zol::decoder_for_category;
using zol::lookup_name;

enum category : std::uint32_t {
  execution, trace, sensors, orbix, nimbrel, interrupt, uart, pkey, control
};

TEST(lookup_name_test, absent_id_becomes_unsigned_decimal) {
  EXPECT_EQ(lookup_name({}, 7), "7");
  EXPECT_EQ(lookup_name(zol::category_names, 4294967295u), "4294967295");
  EXPECT_EQ(lookup_name(zol::category_names, 8), "control");
}

TEST(lookup_name_test, first_row_with_the_id_wins) {
  constexpr zol::id_name twice[] = {{1, "first"}, {1, "second"}};
  EXPECT_EQ(lookup_name(twice, 1), "first");
}

TEST(lookup_name_test, gaps_in_event_tables_print_numbers) {
  EXPECT_EQ(lookup_name(zol::sensor_events, 11), "11");
  EXPECT_EQ(lookup_name(zol::sensor_events, 15), "15");
  EXPECT_EQ(lookup_name(zol::sensor_events, 16), "trigger-magnitude");
  EXPECT_EQ(lookup_name(zol::sensor_events, 18), "18");
  EXPECT_EQ(lookup_name(zol::orbix_events, 2), "2");
  EXPECT_EQ(lookup_name(zol::orbix_events, 17), "trigger-latency");
  EXPECT_EQ(lookup_name(zol::pkey_events, 15), "15");
  EXPECT_EQ(lookup_name(zol::pkey_events, 0x10), "trigger-fingeron");
  EXPECT_EQ(lookup_name(zol::pkey_events, 0x13), "trigger-clickoff");
}

TEST(lookup_name_test, trace_points_have_three_runs_and_repeated_names) {
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0x28), "SimulateClick");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0x29), "41");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0x64), "ResetBegin");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0x69), "EnableStuckFDTimer");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0x6a), "106");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0xc8), "SetState");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0xd7), "AmpPowerUpPhase1");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0xe0), "AmpPowerUpPhase1");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0xe8), "PreWarmToIVEnabled");
  EXPECT_EQ(lookup_name(zol::pkey_trace_points, 0xe9), "233");
}

TEST(decoder_names_test, every_decoder_names_categories_alike) {
  for (std::uint32_t id : {0u, 4u, 7u, 8u, 200u})
    EXPECT_EQ(decoder_for_category(id).category_name(6), "uart");
  EXPECT_EQ(decoder_for_category(pkey).category_name(200), "200");
}

TEST(decoder_names_test, execution_names_only_workloop_events) {
  const auto& decoder = decoder_for_category(execution);
  EXPECT_EQ(decoder.component_name(4), "extfunction");
  EXPECT_EQ(decoder.component_name(5), "5");
  EXPECT_EQ(decoder.event_name(2, 1), "signal");
  EXPECT_EQ(decoder.event_name(2, 2), "2");
  EXPECT_EQ(decoder.event_name(0, 1), "1");
}

TEST(decoder_names_test, trace_names_components_but_not_events) {
  const auto& decoder = decoder_for_category(trace);
  EXPECT_EQ(decoder.component_name(1), "endpoint");
  EXPECT_EQ(decoder.event_name(1, 0), "0");
}

TEST(decoder_names_test, sensor_events_are_named_whatever_the_component) {
  const auto& decoder = decoder_for_category(sensors);
  EXPECT_EQ(decoder.component_name(6), "temperature");
  EXPECT_EQ(decoder.component_name(9), "9");
  EXPECT_EQ(decoder.event_name(9, 8), "filter-state");
}

TEST(decoder_names_test, single_table_categories) {
  EXPECT_EQ(decoder_for_category(orbix).component_name(0), "orbix");
  EXPECT_EQ(decoder_for_category(orbix).event_name(5, 1), "monitor");
  EXPECT_EQ(decoder_for_category(interrupt).component_name(0), "gpio");
  EXPECT_EQ(decoder_for_category(interrupt).event_name(0, 1), "1");
  EXPECT_EQ(decoder_for_category(uart).component_name(2), "uart2");
  EXPECT_EQ(decoder_for_category(uart).component_name(3), "3");
  EXPECT_EQ(decoder_for_category(uart).event_name(1, 2), "rawdata");
}

TEST(decoder_names_test, pkey_latency_component_names_checkpoints) {
  const auto& decoder = decoder_for_category(pkey);
  EXPECT_EQ(decoder.component_name(4), "vexa");
  EXPECT_EQ(decoder.component_name(5), "5");
  EXPECT_EQ(decoder.event_name(3, 2), "ckp_PKEYButtonDown");
  EXPECT_EQ(decoder.event_name(3, 8), "8");
  EXPECT_EQ(decoder.event_name(0, 2), "input-packet");
  EXPECT_EQ(decoder.event_name(1, 0x14), "20");
}

TEST(decoder_names_test, control_and_unknown_categories_name_nothing) {
  for (std::uint32_t id : {8u, 9u, 255u}) {
    EXPECT_EQ(decoder_for_category(id).component_name(0), "0");
    EXPECT_EQ(decoder_for_category(id).event_name(2, 1), "1");
  }
}

}  // namespace
