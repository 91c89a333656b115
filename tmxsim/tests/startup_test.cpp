// The call log, seen from outside: this test program is run again in a child
// process with the platform's environment variables set. How a bad
// description ends the process is checked with the tool, end to end.

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "sim_test_support.h"

namespace {

namespace fs = std::filesystem;

// Run only as the child of the next test.
TEST(startup_child, leaks_a_handle_and_misuses_one) {
  if (std::getenv("TMXSIM_STARTUP_CHILD") == nullptr) GTEST_SKIP();
  lookup(IOServiceNameMatching("ZOL_zol-button"));
  IOObjectRelease(0x7777);
}

TEST(startup, the_call_log_ends_with_the_audit) {
  char name[] = "/tmp/tmxsim_test_XXXXXX";
  const fs::path log = fs::path(mkdtemp(name)) / "calls.log";
  std::ofstream(log) << "an earlier run\n";
  const std::string command = "env -u TMXSIM_DEVICE TMXSIM_STARTUP_CHILD=1 TMXSIM_LOG='" +
                              log.string() + "' '" + fs::read_symlink("/proc/self/exe").string() +
                              "' --gtest_filter=startup_child.* >/dev/null";
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
