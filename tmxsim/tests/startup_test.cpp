// Start-up and exit, seen from outside: this test program is run again in a
// child process with the platform's environment variables set.

#include <stdlib.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "sim_test_support.h"

namespace {

namespace fs = std::filesystem;

struct run_result {
  int status = -1;
  std::string out;
  std::string err;
};

std::string read_file(const fs::path& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class scratch_directory {
 public:
  scratch_directory() {
    char name[] = "/tmp/tmxsim_test_XXXXXX";
    path_ = mkdtemp(name);
  }
  ~scratch_directory() { fs::remove_all(path_); }
  fs::path file(const char* name) const { return path_ / name; }

 private:
  fs::path path_;
};

// This program again, with `settings` added to a clean platform environment.
run_result run_self(const scratch_directory& scratch, const std::string& settings,
                    const std::string& arguments) {
  const fs::path out = scratch.file("out");
  const fs::path err = scratch.file("err");
  const std::string command = "env -u TMXSIM_DEVICE -u TMXSIM_LOG " + settings + " '" +
                              fs::read_symlink("/proc/self/exe").string() + "' " +
                              arguments + " >'" + out.string() + "' 2>'" + err.string() + "'";
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(out), read_file(err)};
}

TEST(startup, a_bad_description_ends_the_process_before_it_starts) {
  scratch_directory scratch;
  const fs::path phone = scratch.file("phone.json");
  std::ofstream(phone) << R"({"services": [{"name": "ZOL_x", "commands": {"215": {"reply": "abc"}}}]})";
  const run_result run =
      run_self(scratch, "TMXSIM_DEVICE='" + phone.string() + "'", "--gtest_list_tests");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "tmxsim: " + phone.string() +
                         R"(: services[0].commands["215"].reply: odd number of hexadecimal digits)"
                         "\n");
}

TEST(startup, a_missing_description_is_named) {
  scratch_directory scratch;
  const fs::path phone = scratch.file("missing.json");
  const run_result run =
      run_self(scratch, "TMXSIM_DEVICE='" + phone.string() + "'", "--gtest_list_tests");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(run.err.starts_with("tmxsim: " + phone.string() + ": ")) << run.err;
  EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
}

// Run only as the child of the next test.
TEST(startup_child, leaks_a_handle_and_misuses_one) {
  if (std::getenv("TMXSIM_STARTUP_CHILD") == nullptr) GTEST_SKIP();
  lookup(IOServiceNameMatching("ZOL_zol-button"));
  IOObjectRelease(0x7777);
}

TEST(startup, the_call_log_ends_with_the_audit) {
  scratch_directory scratch;
  const fs::path log = scratch.file("calls.log");
  std::ofstream(log) << "an earlier run\n";
  const run_result run = run_self(
      scratch, "TMXSIM_STARTUP_CHILD=1 TMXSIM_LOG='" + log.string() + "'",
      "--gtest_filter=startup_child.leaks_a_handle_and_misuses_one");
  EXPECT_EQ(run.status, 0) << run.err;

  std::istringstream lines(read_file(log));
  std::vector<std::string> calls;
  for (std::string line; std::getline(lines, line);) calls.push_back(line);
  ASSERT_EQ(calls.size(), 5u) << read_file(log);
  EXPECT_EQ(calls[0], "an earlier run");
  EXPECT_TRUE(calls[1].starts_with("IOServiceNameMatching \"ZOL_zol-button\" -> ")) << calls[1];
  EXPECT_TRUE(calls[2].starts_with("IOServiceGetMatchingService ")) << calls[2];
  EXPECT_TRUE(calls[3].starts_with("IOObjectRelease 0x7777 ")) << calls[3];
  EXPECT_EQ(calls[4], "audit io_objects=1 connections=0 cf_objects=0 misuse=1");
}

}  // namespace
