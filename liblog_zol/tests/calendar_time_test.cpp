// Calendar time from the timesync service's clock pair, and the line item it
// gives.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

class calendar_time_test : public profile_phone_test {
 protected:
  void SetUp() override {
    profile_phone_test::SetUp();
    tmxsim::reset_state();
  }

  // A timesync service publishing `pair` as its "timesync" property.
  static void load_timesync(const std::string& pair) {
    load(R"({"services": [{"name": "CorvelTMXTimesync", "class": "CorvelTMXTimesync",
              "properties": {"timesync": )" + pair + "}}]}");
  }

  static std::string calendar(std::uint64_t timestamp) {
    std::string text = "untouched";
    if (!profile_calendar_time(timestamp, text)) return "no calendar time";
    return text;
  }

  static void expect_nothing_held() {
    const tmxsim::audit_counts held = tmxsim::audit();
    EXPECT_EQ(held.io_objects, 0);
    EXPECT_EQ(held.cf_objects, 0);
    EXPECT_EQ(held.misuse, 0);
  }
};

TEST_F(calendar_time_test, timestamp_is_shifted_by_the_clock_pair) {
  load_timesync(R"({"tmx": 5000000, "calendar": 1700000000000000000})");
  EXPECT_EQ(calendar(5000), "Nov 14 22:13:20.000000");
  EXPECT_EQ(calendar(5042), "Nov 14 22:13:20.000042");
  EXPECT_EQ(calendar(0), "Nov 14 22:13:19.995000");
  expect_nothing_held();
}

TEST_F(calendar_time_test, timestamp_before_the_synchronisation_is_earlier) {
  load_timesync(R"({"tmx": 10000000000, "calendar": 1700000000000000000})");
  EXPECT_EQ(calendar(0), "Nov 14 22:13:10.000000");
}

TEST_F(calendar_time_test, day_is_two_digits) {
  load_timesync(R"({"tmx": 0, "calendar": 1709547302123456000})");
  EXPECT_EQ(calendar(0), "Mar 04 10:15:02.123456");
}

TEST_F(calendar_time_test, missing_or_non_number_entry_counts_as_zero) {
  load_timesync(R"({"calendar": 1709547302123456000})");
  EXPECT_EQ(calendar(0), "Mar 04 10:15:02.123456");
  load_timesync(R"({"tmx": 0})");
  EXPECT_EQ(calendar(1000000), "Jan 01 00:00:01.000000");
  load_timesync(R"({"tmx": "5", "calendar": 1709547302123456000})");
  EXPECT_EQ(calendar(0), "Mar 04 10:15:02.123456");
  expect_nothing_held();
}

TEST_F(calendar_time_test, no_service_or_no_dictionary_gives_no_calendar_time) {
  EXPECT_EQ(calendar(0), "no calendar time");
  load(R"({"services": [{"name": "CorvelTMXTimesync", "class": "CorvelTMXTimesync"}]})");
  EXPECT_EQ(calendar(0), "no calendar time");
  load_timesync("5");
  EXPECT_EQ(calendar(0), "no calendar time");
  expect_nothing_held();
}

TEST_F(calendar_time_test, line_ends_with_calendar_time_item) {
  load_timesync(R"({"tmx": 0, "calendar": 1709547302123456000})");
  const std::string line = record_bytes(0x02000200, 42, 0).line();
  const std::string end = ",0], 'calendar-time':'Mar 04 10:15:02.123456'}";
  EXPECT_EQ(line.substr(line.size() - end.size()), end);
  expect_nothing_held();
}

}  // namespace
