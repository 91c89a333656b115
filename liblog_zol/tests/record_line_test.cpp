// One record's line: the header names, keys and widths, the payload of each
// category, the type ids, the byte list and the calendar time from the
// timesync service's clock pair.
//
// Payloads: the generic one, chosen by type id, for every category without a
// writer of its own; nimbrel samples (raw words and Q16/Q12 axis values); the
// button controller's input packets, status events, trace points and context
// snapshots.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

using record_line_test = profile_phone_test;

TEST_F(record_line_test, sensors_data_record_renders_whole_line) {
  std::string zeros;
  for (int i = 0; i < 32; ++i) zeros += ",0";
  EXPECT_EQ(record_bytes(0x02000200, 42, 12345678).line(),
            "{  'category':'sensors', 'component': 'accel', 'event':      'data',"
            " 'timestamp':  12345678, 'sequence_num':        42,"
            " 'type-id':33554944, 'category-id':2, 'component-id':0, 'event-id':2,"
            " 'type-id':0, 'binary-data':[0,2,0,2,42,0,0,0,78,97,188,0,0,0,0,0" +
                zeros + "]}");
}

TEST_F(record_line_test, values_wider_than_their_field_are_written_whole) {
  EXPECT_TRUE(record_bytes(0x00000000, 4294967295u, 123456789012ull).line().starts_with(
      "{  'category':'execution', 'component':'scheduler', 'event':         '0',"
      " 'timestamp':123456789012, 'sequence_num':4294967295, 'type-id':0,"));
}

TEST_F(record_line_test, type_ids_of_a_full_word) {
  const std::string line = record_bytes(0xc8fe7f81).line();
  EXPECT_NE(line.find(" 'type-id':3372121985, 'category-id':200, 'component-id':254,"
                      " 'event-id':127, 'type-id':129, 'binary-data':[129,127,254,200,"),
            std::string::npos) << line;
}

// "category/component/event" as the header names them, without padding.
std::string header_names(std::uint32_t word) {
  const std::string line = record_bytes(word).line();
  std::string names;
  for (const char* key : {" 'category':", " 'component':", " 'event':"}) {
    const std::size_t open = line.find('\'', line.find(key) + std::string(key).size());
    if (!names.empty()) names += '/';
    names += line.substr(open + 1, line.find('\'', open + 1) - open - 1);
  }
  return names;
}

// Each decoder's tables, and decimal digits for what no table names.
TEST_F(record_line_test, each_category_names_from_its_own_tables) {
  const struct {
    std::uint32_t word;  // category, component, event, type: one byte each
    const char* names;
  } named_words[] = {
      {0x00020100, "execution/workloop/signal"}, {0x00020200, "execution/workloop/2"},
      {0x00000100, "execution/scheduler/1"}, {0x01010000, "trace/endpoint/0"},
      {0x02090800, "sensors/9/filter-state"}, {0x02060c00, "sensors/temperature/12"},
      {0x02011000, "sensors/gyro/trigger-magnitude"}, {0x03051100, "orbix/5/trigger-latency"},
      {0x03000200, "orbix/orbix/2"}, {0x04070100, "nimbrel/7/data-out"},
      {0x04000200, "nimbrel/nimbrel/2"}, {0x05000100, "interrupt/gpio/1"},
      {0x06020200, "uart/uart2/rawdata"}, {0x06030000, "uart/3/action"},
      {0x07030200, "pkey/latency/ckp_PKEYButtonDown"}, {0x07030800, "pkey/latency/8"},
      {0x07000200, "pkey/pkey/input-packet"}, {0x07011400, "pkey/pellam/20"},
      {0x07041300, "pkey/vexa/trigger-clickoff"}, {0x07050f00, "pkey/5/15"},
      {0x08010200, "control/1/2"}, {0x09000100, "9/0/1"},
  };
  for (const auto& row : named_words) EXPECT_EQ(header_names(row.word), row.names) << row.word;
}

// A timesync service publishing `pair` as its "timesync" property, or no
// property at all for a null `pair`.
void load_timesync(const char* pair) {
  const std::string property =
      pair ? R"(, "properties": {"timesync": )" + std::string(pair) + "}" : "";
  const std::string json =
      R"({"services": [{"name": "CorvelTMXTimesync", "class": "CorvelTMXTimesync")" + property;
  ASSERT_EQ(tmxsim::load_description(json + "}]}", "test phone"), "");
}

std::string calendar(std::uint64_t timestamp) {
  std::string text = "untouched";
  if (!profile_calendar_time(timestamp, text)) return "no calendar time: " + text;
  return text;
}

TEST_F(record_line_test, calendar_time_is_the_timestamp_shifted_by_the_clock_pair) {
  const struct {
    const char* pair;
    std::uint64_t timestamp;
    const char* text;
  } conversions[] = {
      // Without a property or a dictionary there is no calendar time.
      {nullptr, 0, "no calendar time: untouched"},
      {"5", 0, "no calendar time: untouched"},
      {R"({"tmx": 5000000, "calendar": 1700000000000000000})", 5042, "Nov 14 22:13:20.000042"},
      {R"({"tmx": 5000000, "calendar": 1700000000000000000})", 0, "Nov 14 22:13:19.995000"},
      {R"({"tmx": 10000000000, "calendar": 1700000000000000000})", 0, "Nov 14 22:13:10.000000"},
      // A missing or non-number entry counts as zero.
      {R"({"tmx": 0})", 1000000, "Jan 01 00:00:01.000000"},
      {R"({"calendar": 1709547302123456000})", 0, "Mar 04 10:15:02.123456"},
      {R"({"tmx": "5", "calendar": 1709547302123456000})", 0, "Mar 04 10:15:02.123456"},
  };
  EXPECT_EQ(calendar(0), "no calendar time: untouched");  // no timesync service
  for (const auto& conversion : conversions) {
    load_timesync(conversion.pair);
    EXPECT_EQ(calendar(conversion.timestamp), conversion.text)
        << (conversion.pair ? conversion.pair : "no property");
  }
  // The last pair's calendar time ends the line.
  EXPECT_TRUE(record_bytes(0x02000200, 42, 0).line().ends_with(
      ",0], 'calendar-time':'Mar 04 10:15:02.123456'}"));
}

// Category 0 (execution), component 0, event 0, and the given type id.
record_bytes typed(std::uint8_t type) { return record_bytes(type).counting(); }

TEST_F(record_line_test, generic_layouts) {
  const struct {
    record_bytes record;
    const char* payload;
  } layouts[] = {
      {typed(1).u16(16, 1).u16(18, 100).u16(20, 3).u16(22, 0).text(24, "\7\10\11"),
       " 'subtype':         1, 'packet-size':       100, 'data-length':         3,"
       " 'data-offset':         0, 'raw-data':   [7,8,9],"},
      // A small packet has fixed sizes and 30 bytes.
      {typed(2).u16(16, 5),
       " 'subtype':         5, 'packet-size':        30, 'data-length':        30,"
       " 'data-offset':         0, 'raw-data':[18,19,20,21,22,23,24,25,26,27,28,29,30,"
       "31,32,33,34,35,36,37,38,39,40,41,42,43,44,45,46,47],"},
      {typed(4).u32(20, 77), " 'trigger':1, 'thread-id':        77, 'arg':        77,"},
      {typed(5).u32(16, 1).u32(36, 4294967295u),
       " 'function-id':         1, 'extra-id': 387323156, 'thread-id': 454695192,"
       " 'duration': 522067228, 'depth': 589439264, 'thread_duration':4294967295,"},
      {typed(8).u32(16, 1).text(36, "accel-client"),
       " 'name':  'accel-client', 'client':         1, 'report-interval': 387323156,"
       " 'batch-interval': 454695192, 'threshold': 522067228, 'time-limit': 589439264,"},
      {typed(9).u32(28, 9).text(32, std::string_view("run\0", 4)),
       " 'function':     'run', 'arg':         9, 'task': 319951120,"
       " 'thread': 387323156, 'duration': 454695192,"},
      {typed(11).u64(16, 4294967296ull).text(24, "ABCDEFGH").u32(32, 1),
       " 'global-id':4294967296, 'entry-id':5208208757389214273, 'entry':'ABCDEFGH',"
       " 'arg1':         1, 'arg2': 656811300,"},
      {typed(11).u64(24, 7103092),  // "tbl" and zeros
       " 'global-id':1663540288323457296, 'entry-id':   7103092, 'entry':     'tbl',"
       " 'arg1': 589439264, 'arg2': 656811300,"},
      {typed(12).u64(16, 5000000000ull).text(36, std::string_view("dispatch\0", 9)),
       " 'name':      'dispatch', 'sample-interval': 454695192, 'report-interval': 522067228,"
       " 'batch-interval': 589439264, 'next-dispatch':5000000000,"},
      // Types without a layout write nothing, in any category without a writer of its own.
      {typed(0), ""}, {typed(6), ""}, {typed(7), ""}, {typed(10), ""}, {typed(13), ""},
      {typed(255), ""}, {record_bytes(0x06000007), ""},
  };
  for (const auto& layout : layouts)
    EXPECT_EQ(layout.record.payload(), layout.payload) << layout.payload;
}

TEST_F(record_line_test, packet_fragment_lists_no_more_than_data_length_or_24) {
  auto record = typed(1).u16(20, 0).text(24, "\7\10\11");
  EXPECT_TRUE(record.payload().ends_with(" 'raw-data':        [],"));
  EXPECT_TRUE(record.u16(20, 100).payload().ends_with(
      " 'raw-data':[7,8,9,27,28,29,30,31,32,33,34,35,36,37,38,39,40,41,42,43,44,45,46,47],"));
}

TEST_F(record_line_test, arguments_repeat_in_hex_then_header_is_decimal_again) {
  auto record = record_bytes(0x01011003);  // trace, endpoint, event 16, type 3
  const std::string line = record.u32(16, 255).u32(20, 0x12345678).u32(36, 4294967295u).line();
  EXPECT_NE(line.find(" 'arg1':       255, 'arg2': 305419896, 'arg3':         0,"
                      " 'arg4':         0, 'arg5':         0, 'arg6':4294967295,"
                      " 'xarg1':         'ff', 'xarg2':         '12345678',"
                      " 'xarg3':         '0', 'xarg4':         '0', 'xarg5':         '0',"
                      " 'xarg6':         'ffffffff',"
                      " 'type-id':16846851, 'category-id':1, 'component-id':1,"
                      " 'event-id':16, 'type-id':3, 'binary-data':[3,16,1,1,"),
            std::string::npos) << line;
}

record_bytes nimbrel_sample(std::uint32_t word) {
  return record_bytes(word).u32(16, 0x00010000).u32(20, 0xffff8000).u32(24, 1).u32(36, 7);
}

record_bytes pkey_context(std::uint16_t version) {
  return record_bytes(0x0700010a).counting().u16(16, version);
}

const std::string raw_words =
    " 'arg1':     65536, 'arg2':4294934528, 'arg3':         1, 'arg4':         0,"
    " 'arg5':         0, 'arg6':         7,";

// A decoder's own items, then the generic payload of the same bytes as many
// times as the decoder writes it.
TEST_F(record_line_test, decoder_items_then_generic_payload) {
  const struct {
    record_bytes record;
    std::string items;
    int generic_copies;
  } payloads[] = {
      // Nimbrel data-in is Q16, data-out Q12; other types or components get
      // the generic payload only.
      {nimbrel_sample(0x04000003),
       raw_words + " 'x':         1, 'y':      -0.5, 'z':1.52588e-05,", 1},
      {nimbrel_sample(0x04000103),
       raw_words + " 'x':        16, 'y':        -8, 'z':0.000244141,", 0},
      {nimbrel_sample(0x04010003), "", 1}, {nimbrel_sample(0x04000002), "", 1},
      {nimbrel_sample(0x04000203), "", 1},
      {record_bytes(0x07000202).text(18, {"\5\1\1\0\3\0\1\2\4", 9}).u32(27, 100).u32(31, 300),
       " 'reportID':         5, 'buttonState':         1, 'fingerDetect':         1,"
       " 'pressCount':         3, 'longPress':         0, 'terminalEvent':         1,"
       " 'speed':         2, 'stage':         4, 'stageProgress':       100,"
       " 'force':       300,", 1},
      {record_bytes(0x07000302).counting().u32(18, 123456).u8(36, 255),
       " 'status-timestamp':    123456, 'fingerState':        26, 'buttonState':        27,"
       " 'buttonProgress': 522067228, 'clickCount':        33, 'clickCountIsTerminal':        34,"
       " 'clickIsLong':        35, 'clickSpeed':       255,", 1},
      {record_bytes(0x07000003).counting().u32(16, 0xe0),
       " 'trace':       'AmpPowerUpPhase1', 'thread': 387323156, 'arg1': 454695192,"
       " 'arg2': 522067228, 'arg3': 589439264, 'arg4': 656811300,", 1},
      // An unknown button event writes the generic payload twice.
      {record_bytes(0x07000102).counting(), "", 2},
      {record_bytes(0x07020005).counting(), "", 1}, {record_bytes(0x07000201).counting(), "", 1},
      {record_bytes(0x0703ff08).counting(), "", 1},
      // Context snapshots by version, each with a one-byte field set to 255;
      // the generic payload of type id 10 is empty.
      {pkey_context(3).u8(21, 255),
       " 'context-version':3, 'currentContext0':18, 'currentContext1':19,"
       " 'ampsEnabled':20, 'enabled':255, 'mode':421009174, 'scan_time':488381210,"
       " 'active_scan_interval':555753246, 'background_scan_interval':623125282,"
       " 'fingerDetect':38, 'buttonState':39, 'pressCount':40, 'longPress':41,"
       " 'terminalEvent':42, 'speed':43, 'stage':44,", 0},
      {pkey_context(4).u8(45, 255),
       " 'context-version':4, 'mclk_zol_enabled':18, 'mclk_ap_enabled':19,"
       " 'pellam_zol_enabled':20, 'pellam_ap_enabled':21, 'pellamBusy':22, 'enableLYN':23,"
       " 'enableSpkr':24, 'mclk_on':25, 'pellam_on':26, 'pellamPending':27, 'ampsEnabling':28,"
       " 'vexa_ready':29, 'ampsPrewarming':30, 'ampsDisabling':31, 'ampsPending':32,"
       " 'clickState':33, 'clickSpeed':34, 'test_mode':35, 'cl_enable':36, 'cl_zol_enable':37,"
       " 'cl_ap_enable':38, 'pellam_ready':39, 'apState0':40, 'apState1':41, 'zolState0':42,"
       " 'zolState1':43, 'state0':44, 'state1':255,", 0},
      {pkey_context(5).u8(36, 255),
       " 'context-version':5, 'currentContext0':18, 'currentContext1':19,"
       " 'ampsEnabled':20, 'enabled':21, 'scan_period':421009174,"
       " 'scan_time':488381210, 'fingerDetect':30, 'buttonState':31,"
       " 'pressCount':32, 'longPress':33, 'terminalEvent':34, 'speed':35, 'stage':255,", 0},
      {pkey_context(7).u8(42, 255),
       " 'context-version':7, 'mclk_zol_enabled':18, 'mclk_ap_enabled':19,"
       " 'pellam_zol_enabled':20, 'pellam_ap_enabled':21, 'pellamBusy':22, 'enableLYN':23,"
       " 'enableSpkr':24, 'mclk_on':25, 'pellam_on':26, 'pellamPending':27, 'vexa_ready':28,"
       " 'ampsState':29, 'clickState':30, 'clickSpeed':31, 'test_mode':32, 'cl_enable':33,"
       " 'cl_zol_enable':34, 'cl_ap_enable':35, 'pellam_ready':36, 'apState0':37, 'apState1':38,"
       " 'zolState0':39, 'zolState1':40, 'state0':41, 'state1':255,", 0},
      {pkey_context(0), "", 0}, {pkey_context(6), "", 0}, {pkey_context(8), "", 0},
      {pkey_context(0x103), "", 0}, {pkey_context(0xffff), "", 0},
  };
  for (const auto& row : payloads) {
    std::string expected = row.items;
    for (int copy = 0; copy < row.generic_copies; ++copy) expected += row.record.generic_payload();
    EXPECT_EQ(row.record.payload(), expected) << row.items;
  }
}

TEST_F(record_line_test, pkey_trace_names_come_from_both_tables) {
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
  for (const auto& trace : traces)
    EXPECT_TRUE(record_bytes(trace.word).u32(16, trace.id).payload().starts_with(trace.item))
        << trace.item;
}

}  // namespace
