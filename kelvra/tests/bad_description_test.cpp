// A phone description the platform cannot use ends `kelvra --harvest` before
// it writes anything: one line on standard error naming the file and the
// problem, nothing on standard output, exit status 2. Never a crash or an
// out-of-memory, however absurd the description.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>

#include "run_kelvra.h"

namespace {

struct bad_description {
  std::string name;
  std::optional<std::string> text;  // none: the path itself is the problem
  std::string problem;              // words the line must hold
  std::string path = "";            // "" for a fresh file holding `text`
};

// Test names and messages show the row's name, not its bytes.
void PrintTo(const bad_description& bad, std::ostream* out) { *out << bad.name; }

std::string nested(const std::string& open, const std::string& close, int depth) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += open;
  for (int i = 0; i < depth; ++i) text += close;
  return text;
}

std::string with_reply(const std::string& answer) {
  return R"({"services":[{"name":"ZOL_lyn","commands":{"208":)" + answer + "}}]}";
}

const bad_description bad_descriptions[] = {
    {"missing_file", std::nullopt, "cannot open", "/tmp/kelvra_no_such_description.json"},
    {"directory", std::nullopt, "cannot read", "/tmp"},
    {"empty_file", "", "byte offset 0"},
    {"cut_short", R"({"services": [)", "byte offset 14"},
    {"trailing_garbage", "{} x", "byte offset 3"},
    {"ill_formed_utf8", "{\"services\":[{\"name\":\"\xff\"}]}", "byte offset 22"},
    {"top_level_array", "[]", "expected an object"},
    {"services_not_a_list", R"({"services": {}})", "services"},
    {"name_not_a_string", R"({"services":[{"name":7}]})", "services[0].name"},
    {"name_missing", R"({"services":[{"class":"CorvelTMXInterface"}]})", "\"name\""},
    {"unknown_top_level_key", R"({"servises": []})", "servises"},
    {"unknown_answer_key", with_reply(R"({"replies":""})"), "replies"},
    {"odd_length_reply", with_reply(R"({"reply":"abc"})"), "odd"},
    {"non_hex_reply", with_reply(R"({"reply":"zz"})"), "hexadecimal"},
    {"result_too_large", with_reply(R"({"result":4294967296})"), "4294967296"},
    {"result_negative", with_reply(R"({"result":-1})"), "-1"},
    {"result_hex_too_long", with_reply(R"({"result":"0x123456789"})"), "0x123456789"},
    {"absurd_zeros", with_reply(R"({"fields":[{"zeros":1000000000}]})"), "1000000000"},
    {"absurd_text_size", with_reply(R"({"fields":[{"text":"x","size":1000000000}]})"),
     "1000000000"},
    {"u8_out_of_range", with_reply(R"({"fields":[{"u8":256}]})"), "256"},
    {"command_key_not_decimal", R"({"services":[{"name":"a","commands":{"0xd0":{}}}]})",
     "0xd0"},
    {"usage_page_out_of_range", R"({"hid_devices":[{"usage_page":65536,"usage":32}]})",
     "65536"},
    {"deeply_nested_json", nested("[", "]", 100000), "expected an object"},
    {"deeply_nested_property",
     R"({"services":[{"name":"a","properties":{"p":)" + nested("[", "]", 100000) + "}}]}",
     "nested"},
    {"deeply_nested_children",
     R"({"services":[)" + nested(R"({"name":"a","children":[)", "]}", 1000) + "]}", "nested"},
};

class bad_description_run : public testing::TestWithParam<bad_description> {};

TEST_P(bad_description_run, stops_with_one_line_and_status_2) {
  const bad_description& bad = GetParam();
  std::string path = bad.path;
  if (bad.text) {
    char name[] = "/tmp/kelvra_bad_description_XXXXXX";
    const int fd = mkstemp(name);
    ASSERT_GE(fd, 0);
    close(fd);
    path = name;
    std::ofstream(path, std::ios::binary) << *bad.text;
  }

  const kelvra_run run = run_kelvra({"--harvest"}, path);
  if (bad.text) std::remove(path.c_str());

  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(count_lines(run.err), 1) << run.err;
  EXPECT_TRUE(run.err.starts_with("tmxsim: " + path + ": ")) << run.err;
  EXPECT_NE(run.err.find(bad.problem), std::string::npos) << run.err;
}

INSTANTIATE_TEST_SUITE_P(every_kind, bad_description_run, testing::ValuesIn(bad_descriptions),
                         [](const testing::TestParamInfo<bad_description>& row) {
                           return row.param.name;
                         });

}  // namespace
