// Descriptions that break the schema: one line that names the item and the fault.

#include <filesystem>
#include <fstream>
#include <iterator>

#include "sim_test_support.h"

namespace {

struct bad_description {
  const char* json;
  const char* path;     // the item at fault
  const char* problem;  // what the line says about it
};

constexpr bad_description bad_descriptions[] = {
    {"", "invalid JSON at byte offset 0", "syntax error"},
    {R"({"services": [})", "invalid JSON at byte offset 14", "syntax error"},
    {"{} x", "invalid JSON at byte offset 3", "syntax error"},
    {"{\"services\":[{\"name\":\"\xff\"}]}", "invalid JSON at byte offset 22", "ill-formed UTF-8"},
    {"[]", "top level", "expected an object"},
    {R"({"services": {}})", "services", "expected an array"},
    {R"({"version": 1})", "version", "unknown key"},
    {R"({"services": [{"class": "A"}]})", "services[0]", R"(missing required key "name")"},
    {R"({"services": [{"name": "a", "colour": "red"}]})", "services[0].colour", "unknown key"},
    {R"({"services": [{"name": "a"}, {"name": "b", "commands": {"215": {"reply": "0a1"}}}]})",
     R"(services[1].commands["215"].reply)", "odd number of hexadecimal digits"},
    {R"({"services": [{"name": "a", "commands": {"1": {"reply": "0a 1 b"}}}]})",
     R"(services[0].commands["1"].reply)", "blank inside a byte"},
    {R"({"services": [{"name": "a", "commands": {"1": {"reply": "0g"}}}]})",
     R"(services[0].commands["1"].reply)", "not a hexadecimal digit"},
    {R"({"services": [{"name": "a", "commands": {"1": [{}, {"reply": "", "fields": []}]}}]})",
     R"(services[0].commands["1"][1])", R"("reply" and "fields" exclude each other)"},
    {R"({"services": [{"name": "a", "open_result": "0xzz"}]})", "services[0].open_result",
     R"(a result is 0 to 4294967295 or "0x" and 1 to 8 hexadecimal digits)"},
    {R"({"services": [{"name": "a", "open_result": 4294967296}]})", "services[0].open_result",
     "a result is 0 to 4294967295"},
    {R"({"services": [{"name": "a", "commands": {"1": {"result": -1}}}]})",
     R"(services[0].commands["1"].result)", "not -1"},
    {R"({"services": [{"name": "a", "commands": {"1": {"result": "0x123456789"}}}]})",
     R"(services[0].commands["1"].result)", R"(not "0x123456789")"},
    {R"({"services": [{"name": "a", "commands": {"1": {"replies": ""}}}]})",
     R"(services[0].commands["1"].replies)", "unknown key"},
    {R"({"services": [{"name": "a", "commands": {"0x10": {}}}]})",
     R"(services[0].commands["0x10"])", "decimal number"},
    {R"({"services": [{"name": "a", "commands": {"07": {}}}]})",
     R"(services[0].commands["07"])", "without leading zeros"},
    {R"({"services": [{"name": "a", "methods": {"4294967296": {}}}]})",
     R"(services[0].methods["4294967296"])", "selector keys go up to 4294967295"},
    {R"({"hid_devices": [{"usage_page": 1, "usage": 2, "reports": {"256": {}}}]})",
     R"(hid_devices[0].reports["256"])", "report id keys go up to 255"},
    {R"({"services": [{"name": "a", "commands": {"1": {"fields": [{"u8": 1}, {"i32": 2147483648}]}}}]})",
     R"(services[0].commands["1"].fields[1].i32)", "i32 must be -2147483648 to 2147483647"},
    {R"({"services": [{"name": "a", "commands": {"1": {"fields": [{"u16": 1.5}]}}}]})",
     R"(services[0].commands["1"].fields[0].u16)", "expected an integer"},
    {R"({"services": [{"name": "a", "commands": {"1": {"fields": [{"text": "abc"}]}}}]})",
     R"(services[0].commands["1"].fields[0])", R"("text" needs "size")"},
    {R"({"services": [{"name": "a", "commands": {"1": {"fields": [{"u8": 1, "u16": 2}]}}}]})",
     R"(services[0].commands["1"].fields[0])", "a piece is one of"},
    {R"({"services": [{"name": "a", "commands": {"1": {"fields": [{"zeros": 1000000000}]}}}]})",
     R"(services[0].commands["1"].fields[0].zeros)", "zeros must be 0 to 16777216"},
    {R"({"services": [{"name": "a", "commands": {"1": {"fields": [{"text": "x", "size": 1000000000}]}}}]})",
     R"(services[0].commands["1"].fields[0].size)", "size must be 0 to 16777216"},
    {R"({"services": [{"name": "a", "commands": {"1": {"fields": [{"u8": 256}]}}}]})",
     R"(services[0].commands["1"].fields[0].u8)", "u8 must be 0 to 255"},
    {R"({"hid_devices": [{"usage_page": 65536, "usage": 32}]})", "hid_devices[0].usage_page",
     "usage_page must be 0 to 65535"},
    {R"({"services": [{"name": "a", "commands": {"1": {"fields": [{"zeros": 16777216}, {"u8": 0}]}}}]})",
     R"(services[0].commands["1"].fields[1])", "reply larger than 16 MiB"},
    {R"({"services": [{"name": "a", "children": [{"name": "b"}, {"name": 5}]}]})",
     "services[0].children[1].name", "expected a string"},
    {R"({"services": [{"name": "a", "properties": {"scale": 1.5}}]})",
     R"(services[0].properties["scale"])", "found 1.5"},
    {R"({"services": [{"name": "a", "properties": {"big": 9223372036854775808}}]})",
     R"(services[0].properties["big"])", "64-bit signed"},
};

TEST(description_errors, each_names_the_item_and_the_fault) {
  for (const bad_description& bad : bad_descriptions) {
    const std::string error = tmxsim::load_description(bad.json, "test.json");
    const std::string expected_start = std::string("tmxsim: test.json: ") + bad.path + ": ";
    EXPECT_TRUE(error.starts_with(expected_start)) << bad.json << "\n  gave: " << error;
    EXPECT_NE(error.find(bad.problem), std::string::npos) << bad.json << "\n  gave: " << error;
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  }
}

TEST(description_errors, a_rejected_text_is_shown_escaped) {
  // DEL is valid inside a JSON string but must not reach the terminal.
  const std::string error = tmxsim::load_description(
      "{\"services\": [{\"name\": \"a\", \"open_result\": \"0x\x7f\"}]}", "test.json");
  EXPECT_NE(error.find(R"(not "0x\u007f")"), std::string::npos) << error;
  EXPECT_EQ(error.find('\x7f'), std::string::npos) << error;
}

// However deep the nesting, the description is refused, not followed.
TEST(description_errors, deep_nesting_is_refused) {
  const auto nested = [](const std::string& open, const std::string& close, int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) text += open;
    for (int i = 0; i < depth; ++i) text += close;
    return text;
  };
  for (const auto& [json, problem] : {
           std::pair{nested("[", "]", 100000), "top level: expected an object"},
           {R"({"services":[{"name":"a","properties":{"p":)" + nested("[", "]", 100000) + "}}]}",
            "nested more than"},
           {R"({"services":[)" + nested(R"({"name":"a","children":[)", "]}", 1000) + "]}",
            "children nested more than"}}) {
    const std::string error = tmxsim::load_description(json, "test.json");
    EXPECT_NE(error.find(problem), std::string::npos) << error;
  }
}

TEST(description_errors, a_rejected_description_leaves_no_coprocessor) {
  use_phone(R"({"services": [{"name": "ZOL_x"}]})");
  EXPECT_NE(tmxsim::load_description(R"({"services": [{"name": "ZOL_x", "class": 1}]})",
                                     "test.json"),
            "");
  EXPECT_EQ(lookup(IOServiceNameMatching("ZOL_x")), 0u);
}

TEST(description_errors, the_described_phones_are_valid) {
  for (const auto& file : std::filesystem::directory_iterator(TMXSIM_DEVICES)) {
    if (file.path().extension() != ".json") continue;
    std::ifstream stream(file.path());
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(tmxsim::load_description(text, file.path().string()), "");
  }
  EXPECT_EQ(tmxsim::load_description(tmxsim::default_description(), "default"), "");
  tmxsim::load_default_description();
  const io_service_t service = lookup(IOServiceNameMatching("ZOL_zol-button"));
  EXPECT_NE(service, 0u);
  IOObjectRelease(service);
}

}  // namespace
