// Nimbrel samples: raw words and Q16/Q12 axis values, and the generic
// payload that follows data-in but not data-out.

#include <string>

#include "liblog_zol/tests/record_bytes.h"

namespace {

using nimbrel_decoder_test = profile_phone_test;

constexpr std::uint32_t data_in = 0x04000003;
constexpr std::uint32_t data_out = 0x04000103;

record_bytes sample(std::uint32_t word) {
  return record_bytes(word).u32(16, 0x00010000).u32(20, 0xffff8000).u32(24, 1).u32(36, 7);
}

constexpr const char* raw_words =
    " 'arg1':     65536, 'arg2':4294934528, 'arg3':         1, 'arg4':         0,"
    " 'arg5':         0, 'arg6':         7,";

TEST_F(nimbrel_decoder_test, data_in_is_q16_followed_by_generic_payload) {
  const auto record = sample(data_in);
  EXPECT_EQ(record.payload(), raw_words + std::string(" 'x':         1, 'y':      -0.5,"
                                                      " 'z':1.52588e-05,") +
                                  record.generic_payload());
}

TEST_F(nimbrel_decoder_test, data_out_is_q12_without_generic_payload) {
  EXPECT_EQ(sample(data_out).payload(),
            raw_words + std::string(" 'x':        16, 'y':        -8, 'z':0.000244141,"));
}

TEST_F(nimbrel_decoder_test, all_ones_word_is_large_unsigned_and_small_negative) {
  const std::string in = record_bytes(data_in).u32(16, 0xffffffff).payload();
  EXPECT_TRUE(in.starts_with(" 'arg1':4294967295,"));
  EXPECT_NE(in.find(" 'x':-1.52588e-05,"), std::string::npos);
  EXPECT_NE(record_bytes(data_out).u32(16, 0xffffffff).payload().find(" 'x':-0.000244141,"),
            std::string::npos);
}

TEST_F(nimbrel_decoder_test, other_type_or_component_gets_generic_payload_only) {
  for (std::uint32_t word : {0x04010003u, 0x04000002u, 0x04000203u}) {
    const auto record = sample(word);
    EXPECT_NE(record.generic_payload(), "");
    EXPECT_EQ(record.payload(), record.generic_payload()) << word;
  }
}

}  // namespace
