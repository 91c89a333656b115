// Descriptions: those that break the schema make one line that names the item
// and the fault; the described phones are valid. And the call log, seen from
// outside: a child program (startup_child/) is run with the platform's
// environment variables set. How a bad description ends the
// process is checked with the tool, end to end.

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "sim_test_support.h"

namespace {

namespace fs = std::filesystem;

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
    {R"({"services": [{"name": "a"}, {"name": "b", "commands": {"215": {"reply": "0a1"}}}]})",
     R"(services[1].commands["215"].reply)", "odd number of hexadecimal digits"},
    {R"({"hid_devices": [{"usage_page": 1, "usage": 2, "reports": {"256": {}}}]})",
     R"(hid_devices[0].reports["256"])", "report id keys go up to 255"},
    {R"({"hid_devices": [{"usage_page": 65536, "usage": 32}]})", "hid_devices[0].usage_page",
     "usage_page must be 0 to 65535"},
};

// Keys of a service "a"; the path goes on from that service.
constexpr bad_description bad_services[] = {
    {R"("colour": "red")", ".colour", "unknown key"},
    {R"("open_result": "0xzz")", ".open_result",
     R"(a result is 0 to 4294967295 or "0x" and 1 to 8 hexadecimal digits)"},
    {R"("open_result": 4294967296)", ".open_result", "a result is 0 to 4294967295"},
    // A rejected text is shown escaped: DEL may be in a JSON string, not on a terminal.
    {"\"open_result\": \"0x\x7f\"", ".open_result", R"(not "0x\u007f")"},
    {R"("commands": {"0x10": {}})", R"(.commands["0x10"])", "decimal number"},
    {R"("commands": {"07": {}})", R"(.commands["07"])", "without leading zeros"},
    {R"("methods": {"4294967296": {}})", R"(.methods["4294967296"])",
     "selector keys go up to 4294967295"},
    {R"("children": [{"name": "b"}, {"name": 5}])", ".children[1].name", "expected a string"},
    {R"("properties": {"scale": 1.5})", R"(.properties["scale"])", "found 1.5"},
    {R"("properties": {"big": 9223372036854775808})", R"(.properties["big"])", "64-bit signed"},
};

// Answers to command 1 of service "a"; the path goes on from that answer.
constexpr bad_description bad_answers[] = {
    {R"({"reply": "0a 1 b"})", ".reply", "blank inside a byte"},
    {R"({"reply": "0g"})", ".reply", "not a hexadecimal digit"},
    {R"([{}, {"reply": "", "fields": []}])", "[1]", R"("reply" and "fields" exclude each other)"},
    {R"({"result": -1})", ".result", "not -1"},
    {R"({"result": "0x123456789"})", ".result", R"(not "0x123456789")"},
    {R"({"replies": ""})", ".replies", "unknown key"},
    {R"({"fields": [{"u8": 1}, {"i32": 2147483648}]})", ".fields[1].i32",
     "i32 must be -2147483648 to 2147483647"},
    {R"({"fields": [{"u16": 1.5}]})", ".fields[0].u16", "expected an integer"},
    {R"({"fields": [{"text": "abc"}]})", ".fields[0]", R"("text" needs "size")"},
    {R"({"fields": [{"u8": 1, "u16": 2}]})", ".fields[0]", "a piece is one of"},
    {R"({"fields": [{"zeros": 1000000000}]})", ".fields[0].zeros", "zeros must be 0 to 16777216"},
    {R"({"fields": [{"text": "x", "size": 1000000000}]})", ".fields[0].size",
     "size must be 0 to 16777216"},
    {R"({"fields": [{"u8": 256}]})", ".fields[0].u8", "u8 must be 0 to 255"},
    {R"({"fields": [{"zeros": 16777216}, {"u8": 0}]})", ".fields[1]", "reply larger than 16 MiB"},
};

void expect_error(const std::string& json, const std::string& path, const char* problem) {
  SCOPED_TRACE(json);
  const std::string error = tmxsim::load_description(json, "test.json");
  EXPECT_TRUE(error.starts_with("tmxsim: test.json: " + path + ": ")) << error;
  EXPECT_NE(error.find(problem), std::string::npos) << error;
  EXPECT_EQ(error.find_first_of("\n\x7f"), std::string::npos) << error;
}

TEST(descriptions, each_error_names_the_item_and_the_fault) {
  for (const bad_description& bad : bad_descriptions) expect_error(bad.json, bad.path, bad.problem);
  const std::string service_json = R"({"services": [{"name": "a", )";
  for (const bad_description& bad : bad_services)
    expect_error(service_json + bad.json + "}]}", "services[0]" + std::string(bad.path),
                 bad.problem);
  for (const bad_description& bad : bad_answers)
    expect_error(service_json + R"("commands": {"1": )" + bad.json + "}}]}",
                 R"(services[0].commands["1"])" + std::string(bad.path), bad.problem);

  // However deep the nesting, the description is refused, not followed.
  const std::string arrays = std::string(100000, '[') + std::string(100000, ']');
  std::string children = R"({"services":[)";
  for (int depth = 0; depth < 1000; ++depth) children += R"({"name":"a","children":[)";
  for (int depth = 0; depth < 1000; ++depth) children += "]}";
  for (const auto& [json, problem] : {
           std::pair{arrays, "top level: expected an object"},
           {R"({"services":[{"name":"a","properties":{"p":)" + arrays + "}}]}", "nested more than"},
           {children + "]}", "children nested more than"}}) {
    const std::string error = tmxsim::load_description(json, "test.json");
    EXPECT_NE(error.find(problem), std::string::npos) << error;
  }

  // The described phones are valid (the registries beside them are the
  // desk tool's additions, not phones).
  for (const auto& file : fs::directory_iterator(TMXSIM_DEVICES)) {
    const std::string name = file.path().filename().string();
    if (file.path().extension() != ".json" || name.ends_with(".registry.json")) continue;
    std::ifstream stream(file.path());
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(tmxsim::load_description(text, file.path().string()), "");
  }
}

TEST(startup, the_call_log_ends_with_the_audit) {
  char name[] = "/tmp/tmxsim_test_XXXXXX";
  const fs::path log = fs::path(mkdtemp(name)) / "calls.log";
  std::ofstream(log) << "an earlier run\n";
  const std::string command = "env -u TMXSIM_DEVICE TMXSIM_STARTUP_CHILD=1 TMXSIM_LOG='" +
                              log.string() + "' '" + TMXSIM_STARTUP_CHILD + "' >/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);

  std::ifstream lines(log);
  std::vector<std::string> calls;
  for (std::string line; std::getline(lines, line);) calls.push_back(line);
  fs::remove_all(log.parent_path());
  ASSERT_EQ(calls.size(), 5u);
  EXPECT_EQ(calls[0], "an earlier run");
  EXPECT_TRUE(calls[1].starts_with("IOServiceNameMatching \"ZOL_zol-button\" -> ")) << calls[1];
  EXPECT_TRUE(calls[2].starts_with("IOServiceGetMatchingService ")) << calls[2];
  EXPECT_TRUE(calls[3].starts_with("IOObjectRelease 0x7777 ")) << calls[3];
  EXPECT_EQ(calls[4], "audit io_objects=1 connections=0 cf_objects=0 misuse=1");
}

}  // namespace
