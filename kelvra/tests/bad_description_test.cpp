// A phone description the platform cannot use ends `kelvra --harvest` before
// it writes anything: one line on standard error naming the file and the
// problem, nothing on standard output, exit status 2. What the line says for
// each kind of broken description is checked with the platform's own tests.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <optional>
#include <string>

#include "run_kelvra.h"

namespace {

TEST(bad_description_run, stops_with_one_line_and_status_2) {
  const struct {
    std::optional<std::string> text;  // none: the path itself is the problem
    std::string problem;              // words the line must hold
    std::string path = "";            // "" for a fresh file holding `text`
  } bad_descriptions[] = {
      {std::nullopt, "cannot open", "/tmp/kelvra_no_such_description.json"},
      {std::nullopt, "cannot read", "/tmp"},
      {R"({"services": [)", "byte offset 14"},
      {R"({"services":[{"name":7}]})", "services[0].name"},
  };
  for (const auto& bad : bad_descriptions) {
    std::string path = bad.path;
    if (bad.text) {
      char name[] = "/tmp/kelvra_bad_description_XXXXXX";
      close(mkstemp(name));
      path = name;
      std::ofstream(path, std::ios::binary) << *bad.text;
    }
    const kelvra_run run = run_kelvra({"--harvest"}, path);
    if (bad.text) std::remove(path.c_str());

    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.starts_with("tmxsim: " + path + ": ")) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_NE(run.err.find(bad.problem), std::string::npos) << run.err;
  }
}

}  // namespace
