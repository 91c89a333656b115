// One record as JSON: header ids with names, payload values typed under
// snake_case keys (repeated keys numbered), text bytes kept, the calendar
// time in ISO 8601 with its offset, or null without a clock.

#include <nlohmann/json.hpp>

#include "liblog_zol/clock_source.h"
#include "liblog_zol/json_printer.h"
#include "liblog_zol/tests/record_bytes.h"

namespace {

using json_printer_test = profile_phone_test;

nlohmann::json record_json(const record_bytes& record, zol::clock_source& clock) {
  zol::json_printer printer;
  decode_profile_record(printer, record.data(), clock);
  return nlohmann::json::parse(printer.view());
}

nlohmann::json record_json(const record_bytes& record) {
  zol::no_clock none;
  return record_json(record, none);
}

TEST_F(json_printer_test, payload_values_are_typed_under_snake_case_keys) {
  const struct {
    const char* what;
    record_bytes record;
    nlohmann::json payload;  // the keys checked
  } cases[] = {
      {"input packet, then the generic small packet",
       record_bytes(0x07000202).counting(),
       {{"report_id", 18}, {"finger_detect", 20}, {"stage_progress", 0x1e1d1c1b},
        {"subtype", 0x1110}, {"packet_size", 30}, {"data_offset", 0}}},
      {"another event: the generic payload twice, the second numbered",
       record_bytes(0x07001002).counting(),
       {{"subtype", 0x1110}, {"subtype_2", 0x1110}, {"packet_size_2", 30}}},
      {"Q16 sample in, Q12 sample out, raw words kept",
       record_bytes(0x04000003).u32(16, static_cast<std::uint32_t>(-98304)).u32(20, 1),
       {{"x", -1.5}, {"y", 1.0 / 65536}, {"arg1", 4294868992u}, {"arg1_2", 4294868992u}}},
      {"Q12 sample out", record_bytes(0x04000103).u32(16, 6144), {{"x", 1.5}}},
      {"hex words are numbers", record_bytes(0x00000003).u32(16, 255),
       {{"arg1", 255}, {"xarg1", 255}}},
      {"text bytes, quote and backslash kept", record_bytes(0x00000009).text(32, "a\"b\\c\xff"),
       {{"function", "a\"b\\c\u00ff"}}},
      {"trace point name", record_bytes(0x07030003).u32(16, 2),
       {{"trace", "ckp_PKEYButtonDown"}}},
  };
  for (const auto& test : cases) {
    const nlohmann::json payload = record_json(test.record)["payload"];
    for (const auto& [key, value] : test.payload.items())
      EXPECT_EQ(payload[key], value) << test.what << ": " << key << " in " << payload.dump();
  }
}

TEST_F(json_printer_test, header_ids_come_with_their_names) {
  const nlohmann::json pkey = record_json(record_bytes(0x07030202, 7, 99));
  EXPECT_EQ(pkey["category"], "pkey");
  EXPECT_EQ(pkey["component"], "latency");
  EXPECT_EQ(pkey["event"], "ckp_PKEYButtonDown");
  EXPECT_EQ(pkey["type"], "event");
  EXPECT_EQ(pkey["type_word"], 0x07030202);
  EXPECT_EQ(pkey["type_id"], 2);
  EXPECT_EQ(pkey["sequence_num"], 7);
  EXPECT_EQ(pkey["timestamp"], 99);
  EXPECT_EQ(pkey["bytes"].get<std::string>().substr(0, 24), "020203070700000063000000");
  const nlohmann::json unknown = record_json(record_bytes(0xc8010206));
  EXPECT_EQ(unknown["category"], "200");
  EXPECT_EQ(unknown["type"], "6");
  EXPECT_TRUE(unknown["source"].is_null());
}

TEST_F(json_printer_test, exact_in_browsers_quotes_payload_integers_a_double_loses) {
  // A table entry's ids are 64-bit: 2^53 is the first a double may not keep.
  constexpr std::uint64_t first_lost = std::uint64_t{1} << 53;
  const record_bytes entry =
      record_bytes(0x0000000b).u64(16, first_lost).u64(24, first_lost - 1).u32(32, 7);
  const struct {
    bool exact;
    nlohmann::json global_id, entry_id;
  } cases[] = {
      {false, first_lost, first_lost - 1},
      {true, "9007199254740992", first_lost - 1},
  };
  for (const auto& test : cases) {
    zol::json_printer printer;
    printer.set_exact_in_browsers(test.exact);
    zol::no_clock none;
    decode_profile_record(printer, entry.data(), none);
    const nlohmann::json record = nlohmann::json::parse(printer.view());
    const nlohmann::json payload = nlohmann::json::parse(printer.payload());
    EXPECT_EQ(payload, record["payload"]);
    EXPECT_EQ(payload["global_id"], test.global_id) << test.exact;
    EXPECT_EQ(payload["entry_id"], test.entry_id) << test.exact;
    EXPECT_EQ(payload["arg1"], 7) << test.exact;
    EXPECT_EQ(record["timestamp"], 0) << test.exact;
  }
}

TEST_F(json_printer_test, calendar_time_in_iso_8601_or_null) {
  zol::fixed_clock clock({5000000, 1700000000000000000});
  EXPECT_EQ(record_json(record_bytes(0, 0, 5042), clock)["calendar_time"],
            "2023-11-14T22:13:20.000042+00:00");
  EXPECT_TRUE(record_json(record_bytes(0, 0, 5042))["calendar_time"].is_null());
}

}  // namespace
