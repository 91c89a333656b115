// The line around the payload: header keys and widths, the type ids, the
// byte list and the decoder chosen by category.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

std::string zeros(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += ",0";
  return text;
}

using line_framework_test = profile_phone_test;

TEST_F(line_framework_test, sensors_data_record_renders_whole_line) {
  const record_bytes record(0x02000200, 42, 12345678);
  EXPECT_EQ(record.line(),
            "{  'category':'sensors', 'component': 'accel', 'event':      'data',"
            " 'timestamp':  12345678, 'sequence_num':        42,"
            " 'type-id':33554944, 'category-id':2, 'component-id':0, 'event-id':2,"
            " 'type-id':0, 'binary-data':[0,2,0,2,42,0,0,0,78,97,188,0,0,0,0,0" +
                zeros(32) + "]}");
}

TEST_F(line_framework_test, values_wider_than_their_field_are_written_whole) {
  // 'execution' is 11 characters in width 8; 'scheduler' 11 in 8;
  // a 12-digit timestamp in width 10.
  const record_bytes record(0x00000000, 4294967295u, 123456789012ull);
  expect_starts_with(record.line(),
      "{  'category':'execution', 'component':'scheduler', 'event':         '0',"
      " 'timestamp':123456789012, 'sequence_num':4294967295, 'type-id':0,");
}

TEST_F(line_framework_test, control_category_uses_base_decoder) {
  const std::string line = record_bytes(0x08010203).line();
  expect_starts_with(line,
      "{  'category':'control', 'component':     '1', 'event':         '2',");
  EXPECT_NE(line.find(" 'type-id':134283779, 'category-id':8, 'component-id':1,"
                      " 'event-id':2, 'type-id':3, 'binary-data':[3,2,1,8,"),
            std::string::npos);
}

TEST_F(line_framework_test, unknown_category_prints_its_number) {
  const std::string line = record_bytes(0xc8000100).line();
  expect_starts_with(line,
      "{  'category':   '200', 'component':     '0', 'event':         '1',");
  EXPECT_NE(line.find(" 'category-id':200,"), std::string::npos);
}

TEST_F(line_framework_test, unnamed_sensor_event_prints_its_number) {
  expect_starts_with(record_bytes(0x02000c00).line(),
      "{  'category':'sensors', 'component': 'accel', 'event':        '12',");
}

TEST_F(line_framework_test, line_without_calendar_ends_after_byte_list) {
  const std::string line = record_bytes(0x01000000).line();
  EXPECT_EQ(line.substr(line.size() - 4), ",0]}");
  EXPECT_EQ(line.find("calendar-time"), std::string::npos);
}

}  // namespace
