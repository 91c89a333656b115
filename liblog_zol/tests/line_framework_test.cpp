// The line around the payload: header keys and widths, the type ids and the
// byte list.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

using line_framework_test = profile_phone_test;

TEST_F(line_framework_test, sensors_data_record_renders_whole_line) {
  std::string zeros;
  for (int i = 0; i < 32; ++i) zeros += ",0";
  EXPECT_EQ(record_bytes(0x02000200, 42, 12345678).line(),
            "{  'category':'sensors', 'component': 'accel', 'event':      'data',"
            " 'timestamp':  12345678, 'sequence_num':        42,"
            " 'type-id':33554944, 'category-id':2, 'component-id':0, 'event-id':2,"
            " 'type-id':0, 'binary-data':[0,2,0,2,42,0,0,0,78,97,188,0,0,0,0,0" +
                zeros + "]}");
}

TEST_F(line_framework_test, values_wider_than_their_field_are_written_whole) {
  EXPECT_TRUE(record_bytes(0x00000000, 4294967295u, 123456789012ull).line().starts_with(
      "{  'category':'execution', 'component':'scheduler', 'event':         '0',"
      " 'timestamp':123456789012, 'sequence_num':4294967295, 'type-id':0,"));
}

TEST_F(line_framework_test, type_ids_of_a_full_word) {
  const std::string line = record_bytes(0xc8fe7f81).line();
  EXPECT_NE(line.find(" 'type-id':3372121985, 'category-id':200, 'component-id':254,"
                      " 'event-id':127, 'type-id':129, 'binary-data':[129,127,254,200,"),
            std::string::npos) << line;
  EXPECT_TRUE(line.ends_with(",0]}")) << line;
  EXPECT_EQ(line.find("calendar-time"), std::string::npos);
}

}  // namespace
