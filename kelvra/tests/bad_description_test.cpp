// A phone description the platform cannot use ends `kelvra --harvest` before
// it writes anything: one line on standard error naming the file and the
// problem, nothing on standard output, exit status 2. What the line says for
// each kind of broken description is checked with the platform's own tests.

#include <gtest/gtest.h>

#include <string>

#include "expected_output.h"

TEST(bad_description_run, stops_with_one_line_and_status_2) {
  // A path, or the description's text, and words the line must hold.
  const std::pair<std::string, std::string> bad_descriptions[] = {
      {"/tmp/kelvra_no_such_description.json", "cannot open"},
      {"/tmp", "cannot read"},
      {R"({"services": [)", "byte offset 14"},
      {R"({"services":[{"name":7}]})", "services[0].name"},
  };
  for (const auto& [phone, problem] : bad_descriptions) {
    const kelvra_run run = run_kelvra({"--harvest"}, phone);

    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.starts_with("tmxsim: " + run.phone + ": ")) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_NE(run.err.find(problem), std::string::npos) << run.err;
  }
}
