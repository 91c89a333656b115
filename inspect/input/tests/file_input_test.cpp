#include <gtest/gtest.h>
#include <zlib.h>

#include <fstream>
#include <tuple>
#include <vector>

#include "inspect/input/tests/test_inputs.h"

namespace {

using namespace inspect_test;

const std::string scratch = testing::TempDir() + "/inspect_input_test";

std::string gzip(const std::string& text) {
  gzFile file = gzopen(scratch.c_str(), "wb");
  gzwrite(file, text.data(), static_cast<unsigned>(text.size()));
  gzclose(file);
  std::ifstream in(scratch, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(FileInput, PlainAndGzip) {
  std::string text, seen = "hex";
  for (int i = 0; i < 3000; ++i) {
    text += "x\n" + hex_line(i % 256) + "\n";
    add_record(seen, 2 * i + 2, i % 256);
  }
  const std::string packed = gzip(text.substr(0, 1100)) + gzip(text.substr(1100));
  const std::string cut = "kelvra-inspect: " + scratch + ": byte ";
  // Name, what the file holds, what is read: the start of it when a fault ends it.
  const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
      {"plain", text, seen},
      {"two gzip members", packed, seen},
      {"trailer cut short", packed.substr(0, packed.size() - 4), seen + cut},
      {"corrupt from the start", packed.substr(0, 10) + std::string(200, '\xff'),
       "| kelvra-inspect: " + scratch + ": corrupt gzip data: "},
  };
  for (const auto& [name, content, start] : cases) {
    std::ofstream(scratch, std::ios::binary) << content;
    inspect::input_fault fault;
    auto source = inspect::open_file(scratch, fault);
    ASSERT_NE(source, nullptr) << name;
    EXPECT_EQ(source->size(), content.size()) << name;
    const std::string got = drain(std::move(source), scratch);
    EXPECT_EQ(got.substr(0, start.size()), start) << name;
    const bool damaged = start.find("kelvra-inspect") != std::string::npos;
    EXPECT_EQ(got.size() == start.size(), !damaged) << name;
    if (damaged && start[0] != '|') {
      EXPECT_NE(got.find("warning: the input is cut short: corrupt gzip data"), std::string::npos) << got;
    }
  }
  std::remove(scratch.c_str());
}

TEST(FileInput, CannotOpen) {
  for (const auto& [path, error] : {std::pair{"/nonexistent/a", "No such file or directory"},
                                    std::pair{"/", "Is a directory"}}) {
    inspect::input_fault fault;
    EXPECT_EQ(inspect::open_file(path, fault), nullptr);
    EXPECT_EQ(inspect::fault_line(fault),
              "kelvra-inspect: " + std::string(path) + ": cannot open: " + error);
  }
}

}  // namespace
