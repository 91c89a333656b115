// The tables' rows of captures read at once on several threads, each in its
// own zone, as `tables --jobs N` reads captures whose zones differ: no zone
// is the process's, so each capture's calendar times are its own zone's.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>
#include <vector>

#include "inspect/capture/capture_reader.h"
#include "inspect/outputs/table_rows.h"

namespace inspect {
namespace {

// The default phone's capture, printed in UTC: its texts are Mar 14 2026,
// 09:26:52 to 09:26:54.
const std::string capture = KELVRA_DEFAULT_CAPTURE;

struct zone_row {
  const char* zone;
  const char* offset;           // on 14 March 2026, by hand
  std::int64_t offset_seconds;  // the same
};
constexpr zone_row zones[] = {
    {"UTC", "+00:00", 0},
    {"Asia/Tokyo", "+09:00", 9 * 3600},
    {"America/New_York", "-04:00", -4 * 3600},  // daylight time from 8 March
    {"Australia/Lord_Howe", "+11:00", 11 * 3600},  // until 5 April
    {"Asia/Kolkata", "+05:30", 5 * 3600 + 1800},
};

struct read_result {
  bool read = false;
  zol::timesync_pair pair{};
  std::vector<std::string> calendar_times;  // of the records table
};

read_result read_in(const char* zone) {
  capture_options options;
  options.zone = zone;
  options.years = {.year = 2026};
  options.messages = nullptr;
  capture_model model;
  input_fault fault;
  read_result result;
  result.read = read_capture(open_file(capture, fault), capture, options, model, fault) && model.pair.has_value();
  if (!result.read) return result;
  result.pair = *model.pair;
  table_rows rows;
  add_capture_rows(model, {capture, "0"}, rows);
  std::istringstream lines(rows.records);
  for (std::string line; std::getline(lines, line);) {
    const nlohmann::json row = nlohmann::json::parse(line);
    result.calendar_times.push_back(row.at("calendar_time").get<std::string>());
  }
  return result;
}

TEST(zone_rows, captures_read_at_once_each_take_their_own_zone) {
  // Each zone twice, interleaved, all at once.
  std::vector<read_result> results(2 * std::size(zones));
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < results.size(); ++i)
    threads.emplace_back([&, i] { results[i] = read_in(zones[i % std::size(zones)].zone); });
  for (std::thread& thread : threads) thread.join();

  const read_result& utc = results[0];
  ASSERT_TRUE(utc.read);
  ASSERT_EQ(utc.calendar_times.size(), 466u);
  const std::uint64_t utc_offset =
      static_cast<std::uint64_t>(utc.pair.calendar) - static_cast<std::uint64_t>(utc.pair.tmx);
  for (std::size_t i = 0; i < results.size(); ++i) {
    const zone_row& z = zones[i % std::size(zones)];
    SCOPED_TRACE(z.zone);
    const read_result& r = results[i];
    ASSERT_TRUE(r.read);
    // The same local texts name instants the zone's offset earlier.
    const std::uint64_t offset =
        static_cast<std::uint64_t>(r.pair.calendar) - static_cast<std::uint64_t>(r.pair.tmx);
    EXPECT_EQ(offset, utc_offset - static_cast<std::uint64_t>(z.offset_seconds) * 1'000'000'000);
    ASSERT_EQ(r.calendar_times.size(), utc.calendar_times.size());
    for (std::size_t k = 0; k < r.calendar_times.size(); ++k) {
      const std::string& time = r.calendar_times[k];
      const std::string& in_utc = utc.calendar_times[k];
      ASSERT_TRUE(time.ends_with(z.offset)) << time;
      EXPECT_EQ(time.substr(0, time.size() - 6), in_utc.substr(0, in_utc.size() - 6)) << k;
    }
  }
}

TEST(zone_rows, an_unknown_zone_reads_nothing) {
  capture_options options;
  options.zone = "Mars/Olympus";
  options.messages = nullptr;
  capture_model model;
  input_fault fault;
  EXPECT_FALSE(read_capture(open_file(capture, fault), capture, options, model, fault));
  EXPECT_NE(fault_line(fault).find("unknown time zone 'Mars/Olympus'"), std::string::npos);
}

}  // namespace
}  // namespace inspect
