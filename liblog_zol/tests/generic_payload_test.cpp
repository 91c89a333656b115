// The generic payload, chosen by type id, for every category without a
// payload writer of its own.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

using generic_payload_test = profile_phone_test;

// Category 0 (execution), component 0, event 0, and the given type id.
record_bytes execution_record(std::uint8_t type) { return record_bytes(type); }

TEST_F(generic_payload_test, packet_fragment_lists_no_more_than_data_length) {
  auto record = execution_record(1);
  record.u16(16, 1).u16(18, 100).u16(20, 3).u16(22, 0).u8(24, 7).u8(25, 8).u8(26, 9).u8(27, 10);
  EXPECT_EQ(record.payload(),
            " 'subtype':         1, 'packet-size':       100, 'data-length':         3,"
            " 'data-offset':         0, 'raw-data':   [7,8,9],");
  record.u16(20, 0);
  EXPECT_EQ(record.payload(),
            " 'subtype':         1, 'packet-size':       100, 'data-length':         0,"
            " 'data-offset':         0, 'raw-data':        [],");
}

TEST_F(generic_payload_test, packet_fragment_lists_at_most_24_bytes) {
  auto record = execution_record(1);
  record.u16(20, 100);
  for (std::uint8_t i = 0; i < 24; ++i) record.u8(24 + i, static_cast<std::uint8_t>(i + 1));
  EXPECT_EQ(record.payload(),
            " 'subtype':         0, 'packet-size':         0, 'data-length':       100,"
            " 'data-offset':         0,"
            " 'raw-data':[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24],");
}

TEST_F(generic_payload_test, small_packet_has_fixed_sizes_and_30_bytes) {
  auto record = execution_record(2);
  record.u16(16, 5).u8(18, 1).u8(47, 255);
  EXPECT_EQ(record.payload(),
            " 'subtype':         5, 'packet-size':        30, 'data-length':        30,"
            " 'data-offset':         0,"
            " 'raw-data':[1,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,255],");
}

TEST_F(generic_payload_test, arguments_repeat_in_hex_then_header_is_decimal_again) {
  record_bytes record(0x01011003);  // trace, endpoint, event 16, type 3
  record.u32(16, 255).u32(20, 0x12345678).u32(36, 4294967295u);
  const std::string line = record.line();
  EXPECT_NE(line.find(" 'arg1':       255, 'arg2': 305419896, 'arg3':         0,"
                      " 'arg4':         0, 'arg5':         0, 'arg6':4294967295,"
                      " 'xarg1':         'ff', 'xarg2':         '12345678',"
                      " 'xarg3':         '0', 'xarg4':         '0', 'xarg5':         '0',"
                      " 'xarg6':         'ffffffff',"
                      " 'type-id':16846851, 'category-id':1, 'component-id':1,"
                      " 'event-id':16, 'type-id':3, 'binary-data':[3,16,1,1,"),
            std::string::npos)
      << line;
}

TEST_F(generic_payload_test, trigger_prints_constant_and_field_20_twice) {
  auto record = execution_record(4);
  record.u32(16, 5).u32(20, 77);
  EXPECT_EQ(record.payload(), " 'trigger':1, 'thread-id':        77, 'arg':        77,");
}

TEST_F(generic_payload_test, function_timing) {
  auto record = execution_record(5);
  record.u32(16, 1).u32(20, 2).u32(24, 3).u32(28, 4).u32(32, 5).u32(36, 6);
  EXPECT_EQ(record.payload(),
            " 'function-id':         1, 'extra-id':         2, 'thread-id':         3,"
            " 'duration':         4, 'depth':         5, 'thread_duration':         6,");
}

TEST_F(generic_payload_test, client_configuration_name_with_and_without_zero) {
  auto record = execution_record(8);
  record.u32(16, 1).u32(20, 20000).u32(28, 3).u32(32, 4).text(36, "accel-client");
  EXPECT_EQ(record.payload(),
            " 'name':  'accel-client', 'client':         1, 'report-interval':     20000,"
            " 'batch-interval':         0, 'threshold':         3, 'time-limit':         4,");
  record.text(36, std::string_view("gyro\0xyz", 8));
  expect_starts_with(record.payload(), " 'name':          'gyro',");
}

TEST_F(generic_payload_test, task_function_name_with_and_without_zero) {
  auto record = execution_record(9);
  record.u32(16, 1).u32(20, 2).u32(24, 3).u32(28, 9).text(32, "abcdefghijklmnop");
  EXPECT_EQ(record.payload(),
            " 'function':'abcdefghijklmnop', 'arg':         9, 'task':         1,"
            " 'thread':         2, 'duration':         3,");
  record.text(32, std::string_view("run\0", 4));
  expect_starts_with(record.payload(), " 'function':     'run',");
}

TEST_F(generic_payload_test, table_entry_prints_entry_as_number_and_text) {
  auto record = execution_record(11);
  record.u64(16, 4294967296ull).text(24, "tbl").u32(32, 1).u32(36, 2);
  EXPECT_EQ(record.payload(),
            " 'global-id':4294967296, 'entry-id':   7103092, 'entry':     'tbl',"
            " 'arg1':         1, 'arg2':         2,");
  record.text(24, "ABCDEFGH");
  EXPECT_EQ(record.payload(),
            " 'global-id':4294967296, 'entry-id':5208208757389214273, 'entry':'ABCDEFGH',"
            " 'arg1':         1, 'arg2':         2,");
}

TEST_F(generic_payload_test, dispatcher_configuration) {
  auto record = execution_record(12);
  record.u64(16, 5000000000ull).u32(24, 10).u32(28, 20).u32(32, 30).text(36, "dispatch");
  EXPECT_EQ(record.payload(),
            " 'name':      'dispatch', 'sample-interval':        10,"
            " 'report-interval':        20, 'batch-interval':        30,"
            " 'next-dispatch':5000000000,");
}

TEST_F(generic_payload_test, types_without_layout_write_nothing) {
  for (std::uint8_t type : {0, 6, 7, 10, 13, 255}) {
    auto record = execution_record(type);
    record.u32(16, 1).u32(20, 2);
    EXPECT_EQ(record.payload(), "") << int{type};
  }
  EXPECT_NE(record_bytes(0x06000007).line().find("'sequence_num':         0, 'type-id':"),
            std::string::npos);
}

}  // namespace
