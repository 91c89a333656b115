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
  void TearDown() override {
    const tmxsim::audit_counts held = tmxsim::audit();
    EXPECT_EQ(held.io_objects + held.cf_objects + held.misuse, 0);
    profile_phone_test::TearDown();
  }

  // A timesync service publishing `pair` as its "timesync" property.
  static void load_timesync(const std::string& pair) {
    load(R"({"services": [{"name": "CorvelTMXTimesync", "class": "CorvelTMXTimesync",
              "properties": {"timesync": )" + pair + "}}]}");
  }

  static std::string calendar(std::uint64_t timestamp) {
    std::string text = "untouched";
    if (!profile_calendar_time(timestamp, text)) return "no calendar time: " + text;
    return text;
  }
};

TEST_F(calendar_time_test, timestamp_is_shifted_by_the_clock_pair) {
  const struct {
    const char* pair;
    std::uint64_t timestamp;
    const char* text;
  } conversions[] = {
      {R"({"tmx": 5000000, "calendar": 1700000000000000000})", 5000, "Nov 14 22:13:20.000000"},
      {R"({"tmx": 5000000, "calendar": 1700000000000000000})", 5042, "Nov 14 22:13:20.000042"},
      {R"({"tmx": 5000000, "calendar": 1700000000000000000})", 0, "Nov 14 22:13:19.995000"},
      {R"({"tmx": 10000000000, "calendar": 1700000000000000000})", 0, "Nov 14 22:13:10.000000"},
      {R"({"tmx": 0, "calendar": 1709547302123456000})", 0, "Mar 04 10:15:02.123456"},
      // A missing or non-number entry counts as zero.
      {R"({"calendar": 1709547302123456000})", 0, "Mar 04 10:15:02.123456"},
      {R"({"tmx": "5", "calendar": 1709547302123456000})", 0, "Mar 04 10:15:02.123456"},
      {R"({"tmx": 0})", 1000000, "Jan 01 00:00:01.000000"},
  };
  for (const auto& conversion : conversions) {
    SCOPED_TRACE(conversion.pair);
    load_timesync(conversion.pair);
    EXPECT_EQ(calendar(conversion.timestamp), conversion.text);
  }
}

TEST_F(calendar_time_test, no_service_or_no_dictionary_gives_no_calendar_time) {
  EXPECT_EQ(calendar(0), "no calendar time: untouched");
  load(R"({"services": [{"name": "CorvelTMXTimesync", "class": "CorvelTMXTimesync"}]})");
  EXPECT_EQ(calendar(0), "no calendar time: untouched");
  load_timesync("5");
  EXPECT_EQ(calendar(0), "no calendar time: untouched");
}

TEST_F(calendar_time_test, line_ends_with_calendar_time_item) {
  load_timesync(R"({"tmx": 0, "calendar": 1709547302123456000})");
  EXPECT_TRUE(record_bytes(0x02000200, 42, 0).line().ends_with(
      ",0], 'calendar-time':'Mar 04 10:15:02.123456'}"));
}

}  // namespace
