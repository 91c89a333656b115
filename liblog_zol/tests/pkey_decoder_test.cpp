// Button-controller records: input packets, status events, trace points and
// context snapshots, each with or without the generic payload after it.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

using pkey_decoder_test = profile_phone_test;

// Every payload byte k holds the value k, so a field's value names the
// offset it was read from.
record_bytes counting_record(std::uint32_t word) {
  record_bytes record(word);
  for (std::uint8_t k = 16; k < 48; ++k) record.u8(k, k);
  return record;
}

std::string small_packet_with(std::string_view raw_data) {
  return " 'subtype':         0, 'packet-size':        30, 'data-length':        30,"
         " 'data-offset':         0, 'raw-data':" +
         std::string(raw_data) + ",";
}

std::string zeros(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += ",0";
  return text;
}

TEST_F(pkey_decoder_test, input_packet_then_generic_payload_once) {
  record_bytes record(0x07000202);
  const std::uint8_t packet[] = {5, 1, 1, 0, 3, 0, 1, 2, 4};
  for (std::uint8_t i = 0; i < sizeof packet; ++i) record.u8(18 + i, packet[i]);
  record.u32(27, 100).u32(31, 300);
  EXPECT_EQ(record.payload(),
            " 'reportID':         5, 'buttonState':         1, 'fingerDetect':         1,"
            " 'pressCount':         3, 'longPress':         0, 'terminalEvent':         1,"
            " 'speed':         2, 'stage':         4, 'stageProgress':       100,"
            " 'force':       300," +
                small_packet_with("[5,1,1,0,3,0,1,2,4,100,0,0,0,44,1,0,0" + zeros(13) + "]"));
}

TEST_F(pkey_decoder_test, status_event_then_generic_payload_once) {
  record_bytes record(0x07000302);
  record.u32(18, 123456).u8(26, 1).u8(27, 2).u32(28, 70000).u8(33, 2).u8(34, 1).u8(36, 255);
  EXPECT_EQ(record.payload(),
            " 'status-timestamp':    123456, 'fingerState':         1,"
            " 'buttonState':         2, 'buttonProgress':     70000, 'clickCount':         2,"
            " 'clickCountIsTerminal':         1, 'clickIsLong':         0,"
            " 'clickSpeed':       255," +
                small_packet_with("[64,226,1,0,0,0,0,0,1,2,112,17,1,0,0,2,1,0,255" +
                                  zeros(11) + "]"));
}

TEST_F(pkey_decoder_test, unknown_event_writes_generic_payload_twice) {
  record_bytes record(0x07000102);
  record.u8(18, 9);
  const std::string once = small_packet_with("[9" + zeros(29) + "]");
  EXPECT_EQ(record.payload(), once + once);
}

TEST_F(pkey_decoder_test, trace_point_then_generic_payload) {
  record_bytes record(0x07000003);
  record.u32(16, 0xe0).u32(20, 1).u32(24, 2).u32(28, 3).u32(32, 4).u32(36, 5);
  EXPECT_EQ(record.payload(),
            " 'trace':       'AmpPowerUpPhase1', 'thread':         1, 'arg1':         2,"
            " 'arg2':         3, 'arg3':         4, 'arg4':         5,"
            " 'arg1':       224, 'arg2':         1, 'arg3':         2, 'arg4':         3,"
            " 'arg5':         4, 'arg6':         5, 'xarg1':         'e0',"
            " 'xarg2':         '1', 'xarg3':         '2', 'xarg4':         '3',"
            " 'xarg5':         '4', 'xarg6':         '5',");
}

TEST_F(pkey_decoder_test, trace_names_come_from_both_tables) {
  const auto trace_item = [](std::uint32_t word, std::uint32_t id) {
    const std::string payload = record_bytes(word).u32(16, id).payload();
    return payload.substr(0, payload.find(','));
  };
  EXPECT_EQ(trace_item(0x07000003, 0xc8), " 'trace':               'SetState'");
  EXPECT_EQ(trace_item(0x07040003, 0x29), " 'trace':                     '41'");
  EXPECT_EQ(trace_item(0x07000003, 0x5), " 'trace':'AmpWorkerRequestComplete'");
  EXPECT_EQ(trace_item(0x07010003, 0x10000c8), " 'trace':               '16777416'");
  // The latency component names its trace points as its events.
  EXPECT_EQ(trace_item(0x07030003, 5), " 'trace': 'ckp_PellamStartHaptics'");
  EXPECT_EQ(trace_item(0x07030003, 9), " 'trace':                      '9'");
  EXPECT_EQ(trace_item(0x07030003, 0xc8), " 'trace':                    '200'");
  EXPECT_EQ(trace_item(0x07030003, 0x105), " 'trace':                    '261'");
}

TEST_F(pkey_decoder_test, context_version_3_then_generic_payload) {
  auto record = counting_record(0x0700010a);
  record.u16(16, 3).u8(21, 255);
  // The generic payload of type id 10 is empty.
  EXPECT_EQ(record.payload(),
            " 'context-version':3, 'currentContext0':18, 'currentContext1':19,"
            " 'ampsEnabled':20, 'enabled':255, 'mode':421009174, 'scan_time':488381210,"
            " 'active_scan_interval':555753246, 'background_scan_interval':623125282,"
            " 'fingerDetect':38, 'buttonState':39, 'pressCount':40, 'longPress':41,"
            " 'terminalEvent':42, 'speed':43, 'stage':44,");
}

TEST_F(pkey_decoder_test, context_version_4) {
  auto record = counting_record(0x0700070a);
  record.u16(16, 4).u8(45, 255);
  EXPECT_EQ(record.payload(),
            " 'context-version':4, 'mclk_zol_enabled':18, 'mclk_ap_enabled':19,"
            " 'pellam_zol_enabled':20, 'pellam_ap_enabled':21, 'pellamBusy':22,"
            " 'enableLYN':23, 'enableSpkr':24, 'mclk_on':25, 'pellam_on':26,"
            " 'pellamPending':27, 'ampsEnabling':28, 'vexa_ready':29,"
            " 'ampsPrewarming':30, 'ampsDisabling':31, 'ampsPending':32,"
            " 'clickState':33, 'clickSpeed':34, 'test_mode':35, 'cl_enable':36,"
            " 'cl_zol_enable':37, 'cl_ap_enable':38, 'pellam_ready':39, 'apState0':40,"
            " 'apState1':41, 'zolState0':42, 'zolState1':43, 'state0':44, 'state1':255,");
}

TEST_F(pkey_decoder_test, context_version_5) {
  auto record = counting_record(0x0700010a);
  record.u16(16, 5);
  EXPECT_EQ(record.payload(),
            " 'context-version':5, 'currentContext0':18, 'currentContext1':19,"
            " 'ampsEnabled':20, 'enabled':21, 'scan_period':421009174,"
            " 'scan_time':488381210, 'fingerDetect':30, 'buttonState':31,"
            " 'pressCount':32, 'longPress':33, 'terminalEvent':34, 'speed':35, 'stage':36,");
}

TEST_F(pkey_decoder_test, context_version_7) {
  auto record = counting_record(0x0700010a);
  record.u16(16, 7).u8(42, 255);
  EXPECT_EQ(record.payload(),
            " 'context-version':7, 'mclk_zol_enabled':18, 'mclk_ap_enabled':19,"
            " 'pellam_zol_enabled':20, 'pellam_ap_enabled':21, 'pellamBusy':22,"
            " 'enableLYN':23, 'enableSpkr':24, 'mclk_on':25, 'pellam_on':26,"
            " 'pellamPending':27, 'vexa_ready':28, 'ampsState':29, 'clickState':30,"
            " 'clickSpeed':31, 'test_mode':32, 'cl_enable':33, 'cl_zol_enable':34,"
            " 'cl_ap_enable':35, 'pellam_ready':36, 'apState0':37, 'apState1':38,"
            " 'zolState0':39, 'zolState1':40, 'state0':41, 'state1':255,");
}

TEST_F(pkey_decoder_test, other_context_versions_print_no_context_keys) {
  for (std::uint16_t version : {0, 6, 8, 0x103, 0xffff}) {
    auto record = counting_record(0x0700010a);
    record.u16(16, version);
    EXPECT_EQ(record.payload(), "") << version;
  }
}

TEST_F(pkey_decoder_test, other_type_ids_get_generic_payload_only) {
  record_bytes record(0x07020005);
  record.u32(16, 1).u32(36, 6);
  EXPECT_EQ(record.payload(),
            " 'function-id':         1, 'extra-id':         0, 'thread-id':         0,"
            " 'duration':         0, 'depth':         0, 'thread_duration':         6,");
}

TEST_F(pkey_decoder_test, header_names_latency_checkpoints) {
  expect_starts_with(record_bytes(0x07030200).line(),
                     "{  'category':  'pkey', 'component':'latency',"
                     " 'event':'ckp_PKEYButtonDown',");
  expect_starts_with(record_bytes(0x07000200).line(),
                     "{  'category':  'pkey', 'component':  'pkey', 'event':'input-packet',");
}

}  // namespace
