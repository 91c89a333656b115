// The generic payload, chosen by type id, for every category without a
// payload writer of its own.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

using generic_payload_test = profile_phone_test;

// Category 0 (execution), component 0, event 0, and the given type id.
record_bytes typed(std::uint8_t type) { return record_bytes(type).counting(); }

TEST_F(generic_payload_test, packet_fragment_lists_no_more_than_data_length_or_24) {
  auto record = typed(1).u16(16, 1).u16(18, 100).u16(20, 3).u16(22, 0).text(24, "\7\10\11");
  EXPECT_EQ(record.payload(),
            " 'subtype':         1, 'packet-size':       100, 'data-length':         3,"
            " 'data-offset':         0, 'raw-data':   [7,8,9],");
  EXPECT_TRUE(record.u16(20, 0).payload().ends_with(" 'raw-data':        [],"));
  EXPECT_TRUE(record.u16(20, 100).payload().ends_with(
      " 'raw-data':[7,8,9,27,28,29,30,31,32,33,34,35,36,37,38,39,40,41,42,43,44,45,46,47],"));
}

TEST_F(generic_payload_test, small_packet_has_fixed_sizes_and_30_bytes) {
  EXPECT_EQ(typed(2).u16(16, 5).payload(),
            " 'subtype':         5, 'packet-size':        30, 'data-length':        30,"
            " 'data-offset':         0, 'raw-data':[18,19,20,21,22,23,24,25,26,27,28,29,30,"
            "31,32,33,34,35,36,37,38,39,40,41,42,43,44,45,46,47],");
}

TEST_F(generic_payload_test, arguments_repeat_in_hex_then_header_is_decimal_again) {
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

TEST_F(generic_payload_test, fixed_layouts) {
  const struct {
    record_bytes record;
    const char* payload;
  } layouts[] = {
      {typed(4).u32(20, 77),
       " 'trigger':1, 'thread-id':        77, 'arg':        77,"},
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
       " 'name':      'dispatch', 'sample-interval': 454695192,"
       " 'report-interval': 522067228, 'batch-interval': 589439264,"
       " 'next-dispatch':5000000000,"},
  };
  for (const auto& layout : layouts) {
    SCOPED_TRACE(layout.payload);
    EXPECT_EQ(layout.record.payload(), layout.payload);
  }
}

TEST_F(generic_payload_test, types_without_layout_write_nothing) {
  for (std::uint8_t type : {0, 6, 7, 10, 13, 255}) EXPECT_EQ(typed(type).payload(), "") << +type;
  EXPECT_NE(record_bytes(0x06000007).line().find("'sequence_num':         0, 'type-id':"),
            std::string::npos);
}

}  // namespace
