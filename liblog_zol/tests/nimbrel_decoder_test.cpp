// Nimbrel samples: raw words and Q16/Q12 axis values, and the generic
// payload that follows data-in but not data-out.

#include <string>

#include "liblog_zol/profile_decoder.h"
#include "liblog_zol/tests/record_bytes.h"

namespace {

using nimbrel_decoder_test = profile_phone_test;

constexpr std::uint32_t data_in = 0x04000003;
constexpr std::uint32_t data_out = 0x04000103;

const std::string generic_arguments =
    " 'arg1':     65536, 'arg2':4294934528, 'arg3':         1, 'arg4':         0,"
    " 'arg5':         0, 'arg6':         0, 'xarg1':         '10000',"
    " 'xarg2':         'ffff8000', 'xarg3':         '1', 'xarg4':         '0',"
    " 'xarg5':         '0', 'xarg6':         '0',";

record_bytes sample(std::uint32_t word) {
  record_bytes record(word);
  record.u32(16, 0x00010000).u32(20, 0xffff8000).u32(24, 1);
  return record;
}

TEST_F(nimbrel_decoder_test, data_in_is_q16_followed_by_generic_payload) {
  EXPECT_EQ(sample(data_in).payload(),
            " 'arg1':     65536, 'arg2':4294934528, 'arg3':         1, 'arg4':         0,"
            " 'arg5':         0, 'arg6':         0,"
            " 'x':         1, 'y':      -0.5, 'z':1.52588e-05," +
                generic_arguments);
}

TEST_F(nimbrel_decoder_test, data_out_is_q12_without_generic_payload) {
  EXPECT_EQ(sample(data_out).payload(),
            " 'arg1':     65536, 'arg2':4294934528, 'arg3':         1, 'arg4':         0,"
            " 'arg5':         0, 'arg6':         0,"
            " 'x':        16, 'y':        -8, 'z':0.000244141,");
}

TEST_F(nimbrel_decoder_test, all_ones_word_is_large_unsigned_and_small_negative) {
  auto in = record_bytes(data_in).u32(16, 0xffffffff);
  auto out = record_bytes(data_out).u32(16, 0xffffffff);
  expect_starts_with(in.payload(), " 'arg1':4294967295,");
  EXPECT_NE(in.payload().find(" 'x':-1.52588e-05,"), std::string::npos);
  EXPECT_NE(out.payload().find(" 'x':-0.000244141,"), std::string::npos);
}

TEST_F(nimbrel_decoder_test, other_type_or_component_gets_generic_payload_only) {
  EXPECT_EQ(sample(0x04010003).payload(), generic_arguments);
  EXPECT_EQ(sample(0x04000002).payload(),
            " 'subtype':         0, 'packet-size':        30, 'data-length':        30,"
            " 'data-offset':         0, 'raw-data':[1,0,0,128,255,255,1,0,0,0,0,0,0,0,0,0,"
            "0,0,0,0,0,0,0,0,0,0,0,0,0,0],");
}

TEST_F(nimbrel_decoder_test, names) {
  expect_starts_with(sample(data_out).line(),
                     "{  'category':'nimbrel', 'component':'nimbrel', 'event':  'data-out',");
  const auto& decoder = zol::decoder_for_category(4);
  EXPECT_EQ(decoder.event_name(7, 1), "data-out");
  EXPECT_EQ(decoder.event_name(0, 0), "data-in");
  EXPECT_EQ(decoder.event_name(0, 2), "2");
  EXPECT_EQ(decoder.component_name(1), "1");
}

}  // namespace
