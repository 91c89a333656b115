// Button-controller records: input packets, status events, trace points and
// context snapshots, each with or without the generic payload after it.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

using pkey_decoder_test = profile_phone_test;

TEST_F(pkey_decoder_test, input_packet_then_generic_payload_once) {
  auto record = record_bytes(0x07000202).text(18, std::string_view("\5\1\1\0\3\0\1\2\4", 9));
  record.u32(27, 100).u32(31, 300);
  EXPECT_EQ(record.payload(),
            " 'reportID':         5, 'buttonState':         1, 'fingerDetect':         1,"
            " 'pressCount':         3, 'longPress':         0, 'terminalEvent':         1,"
            " 'speed':         2, 'stage':         4, 'stageProgress':       100,"
            " 'force':       300," + record.generic_payload());
}

TEST_F(pkey_decoder_test, status_event_then_generic_payload_once) {
  auto record = record_bytes(0x07000302).counting().u32(18, 123456).u8(36, 255);
  EXPECT_EQ(record.payload(),
            " 'status-timestamp':    123456, 'fingerState':        26,"
            " 'buttonState':        27, 'buttonProgress': 522067228, 'clickCount':        33,"
            " 'clickCountIsTerminal':        34, 'clickIsLong':        35,"
            " 'clickSpeed':       255," + record.generic_payload());
}

TEST_F(pkey_decoder_test, unknown_event_writes_generic_payload_twice) {
  const auto record = record_bytes(0x07000102).counting();
  const std::string once = record.generic_payload();
  EXPECT_TRUE(once.starts_with(" 'subtype':"));
  EXPECT_EQ(record.payload(), once + once);
}

TEST_F(pkey_decoder_test, trace_point_then_generic_payload) {
  auto record = record_bytes(0x07000003).counting().u32(16, 0xe0);
  EXPECT_EQ(record.payload(),
            " 'trace':       'AmpPowerUpPhase1', 'thread': 387323156, 'arg1': 454695192,"
            " 'arg2': 522067228, 'arg3': 589439264, 'arg4': 656811300," +
                record.generic_payload());
}

TEST_F(pkey_decoder_test, trace_names_come_from_both_tables) {
  const struct {
    std::uint32_t word, id;
    const char* item;
  } traces[] = {
      {0x07000003, 0xc8, " 'trace':               'SetState',"},
      {0x07040003, 0x29, " 'trace':                     '41',"},
      {0x07000003, 0x5, " 'trace':'AmpWorkerRequestComplete',"},
      {0x07010003, 0x10000c8, " 'trace':               '16777416',"},
      {0x07000003, 0xffffffff, " 'trace':             '4294967295',"},
      // The latency component names its trace points as its events.
      {0x07030003, 5, " 'trace': 'ckp_PellamStartHaptics',"},
      {0x07030003, 9, " 'trace':                      '9',"},
      {0x07030003, 0xc8, " 'trace':                    '200',"},
  };
  for (const auto& trace : traces) {
    SCOPED_TRACE(trace.item);
    EXPECT_TRUE(record_bytes(trace.word).u32(16, trace.id).payload().starts_with(trace.item));
  }
}

// The generic payload of type id 10 is empty, so only the table shows.
TEST_F(pkey_decoder_test, context_tables_by_version) {
  const struct {
    std::uint16_t version;
    std::size_t all_ones;  // a one-byte field set to 255
    const char* payload;
  } contexts[] = {
      {3, 21,
       " 'context-version':3, 'currentContext0':18, 'currentContext1':19,"
       " 'ampsEnabled':20, 'enabled':255, 'mode':421009174, 'scan_time':488381210,"
       " 'active_scan_interval':555753246, 'background_scan_interval':623125282,"
       " 'fingerDetect':38, 'buttonState':39, 'pressCount':40, 'longPress':41,"
       " 'terminalEvent':42, 'speed':43, 'stage':44,"},
      {4, 45,
       " 'context-version':4, 'mclk_zol_enabled':18, 'mclk_ap_enabled':19,"
       " 'pellam_zol_enabled':20, 'pellam_ap_enabled':21, 'pellamBusy':22,"
       " 'enableLYN':23, 'enableSpkr':24, 'mclk_on':25, 'pellam_on':26,"
       " 'pellamPending':27, 'ampsEnabling':28, 'vexa_ready':29,"
       " 'ampsPrewarming':30, 'ampsDisabling':31, 'ampsPending':32,"
       " 'clickState':33, 'clickSpeed':34, 'test_mode':35, 'cl_enable':36,"
       " 'cl_zol_enable':37, 'cl_ap_enable':38, 'pellam_ready':39, 'apState0':40,"
       " 'apState1':41, 'zolState0':42, 'zolState1':43, 'state0':44, 'state1':255,"},
      {5, 36,
       " 'context-version':5, 'currentContext0':18, 'currentContext1':19,"
       " 'ampsEnabled':20, 'enabled':21, 'scan_period':421009174,"
       " 'scan_time':488381210, 'fingerDetect':30, 'buttonState':31,"
       " 'pressCount':32, 'longPress':33, 'terminalEvent':34, 'speed':35, 'stage':255,"},
      {7, 42,
       " 'context-version':7, 'mclk_zol_enabled':18, 'mclk_ap_enabled':19,"
       " 'pellam_zol_enabled':20, 'pellam_ap_enabled':21, 'pellamBusy':22,"
       " 'enableLYN':23, 'enableSpkr':24, 'mclk_on':25, 'pellam_on':26,"
       " 'pellamPending':27, 'vexa_ready':28, 'ampsState':29, 'clickState':30,"
       " 'clickSpeed':31, 'test_mode':32, 'cl_enable':33, 'cl_zol_enable':34,"
       " 'cl_ap_enable':35, 'pellam_ready':36, 'apState0':37, 'apState1':38,"
       " 'zolState0':39, 'zolState1':40, 'state0':41, 'state1':255,"},
      {0, 0, ""}, {6, 0, ""}, {8, 0, ""}, {0x103, 0, ""}, {0xffff, 0, ""},
  };
  for (const auto& context : contexts) {
    SCOPED_TRACE(context.version);
    auto record = record_bytes(0x0700010a).counting().u16(16, context.version);
    if (context.all_ones != 0) record.u8(context.all_ones, 255);
    EXPECT_EQ(record.payload(), context.payload);
  }
}

TEST_F(pkey_decoder_test, other_type_ids_get_generic_payload_only) {
  for (std::uint32_t word : {0x07020005u, 0x07000201u, 0x0703ff08u}) {
    const auto record = record_bytes(word).counting();
    EXPECT_EQ(record.payload(), record.generic_payload()) << word;
  }
}

}  // namespace
