// One decoded profile line goes through a CoreFoundation string on its way
// out; text outside ASCII must still reach standard output.

#include <tmxsim/control.h>

#include <cstring>
#include <string>

#include "quandor/profile_retrieval.h"
#include "test_record.h"

namespace {

// A sensors client-configuration record (type id 8) whose name is `name`.
std::vector<std::uint8_t> record_named(const char* name) {
  std::vector<std::uint8_t> record = reply_buffer(48);
  put<std::uint32_t>(record, 0, 0x02000008);
  std::memcpy(record.data() + 36, name, std::strlen(name));
  return record;
}

class profile_line : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(tmxsim::load_description("{}", "no clock"), ""); }
  void TearDown() override { tmxsim::load_default_description(); }
};

TEST_F(profile_line, text_outside_ascii_is_still_written) {
  const auto record = record_named("caf\xc3\xa9");
  const std::string out = stdout_of([&] { print_profile_record(record.data()); });
  // Seven bytes of quoted name, padded to sixteen.
  EXPECT_NE(out.find(" 'name':         'caf\xc3\xa9', 'client':"), std::string::npos) << out;
  EXPECT_EQ(out.substr(out.size() - 3), "]}\n");
  EXPECT_EQ(tmxsim::audit().cf_objects, 0);
}

TEST_F(profile_line, text_that_is_not_utf8_writes_nothing) {
  const auto record = record_named("\xff\xfe");
  EXPECT_EQ(stdout_of([&] { print_profile_record(record.data()); }), "");
  EXPECT_EQ(tmxsim::audit().cf_objects, 0);
}

}  // namespace
