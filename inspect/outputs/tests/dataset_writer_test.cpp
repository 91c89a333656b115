// The dataset's files: Hive's folder names, and each table file's rows,
// bytes and SHA-256 (expected hashes from Python's hashlib) in the
// top folder and in a folder per label value.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <zlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "inspect/outputs/dataset_writer.h"

namespace inspect::test {
namespace {

namespace fs = std::filesystem;

TEST(hive_folder, escapes_what_hive_escapes_and_names_no_value_as_hive_does) {
  const struct {
    std::string_view label;
    std::optional<std::string_view> value;
    std::string_view folder;
  } cases[] = {
      {"build", "B2", "build=B2"},
      {"build", "fw/b=2", "build=fw%2Fb%3D2"},
      {"build", "\"#%'*/:=?\\{[]^", "build=%22%23%25%27%2A%2F%3A%3D%3F%5C%7B%5B%5D%5E"},
      {"build", std::string_view("\x01\t\n\r\x1f\x7f", 6), "build=%01%09%0A%0D%1F%7F"},
      {"build", std::string_view("a\0b", 3), "build=a%00b"},
      // Kept: blanks, dots, the rest of ASCII's punctuation, UTF-8.
      {"build", "a b.c-d_e+f,g;h!i@j$k&l(m)n~o`p|q<r>s}t", "build=a b.c-d_e+f,g;h!i@j$k&l(m)n~o`p|q<r>s}t"},
      {"build", "..", "build=.."},
      {"site", "caf\xc3\xa9", "site=caf\xc3\xa9"},
      {"a=b", "c", "a%3Db=c"},
      {"build", "", "build=__HIVE_DEFAULT_PARTITION__"},
      {"build", std::nullopt, "build=__HIVE_DEFAULT_PARTITION__"},
  };
  for (const auto& c : cases) EXPECT_EQ(hive_folder(c.label, c.value), c.folder) << c.folder;
}

class scratch_folder : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "dataset-files-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    root = name;
  }
  void TearDown() override { fs::remove_all(root); }

  std::string read(const std::string& path) const {
    std::ifstream in(root / path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }

  fs::path root;
};

constexpr std::string_view one = "{\"a\":1}\n", two = "{\"a\":2}\n", three = "{\"b\":3}\n";
constexpr std::string_view empty_sha256 = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

TEST_F(scratch_folder, folders_per_value_each_with_four_tables_counted_and_hashed) {
  std::vector<table_file_facts> files;
  {
    dataset_writer writer(root, false, false);
    ASSERT_TRUE(writer.write("build=B2", {one, "", "", ""}));
    ASSERT_TRUE(writer.write("build=B1", {"", three, "", ""}));
    ASSERT_TRUE(writer.write("build=B2", {two, "", "", ""}));
    ASSERT_TRUE(writer.close(files));
  }
  ASSERT_EQ(files.size(), 8u);
  const struct {
    std::string_view path;
    std::uint64_t rows, bytes;
    std::string_view sha256;
  } want[] = {
      {"build=B1/harvests.jsonl", 0, 0, empty_sha256},
      {"build=B1/records.jsonl", 1, 8, "95d3089ccbab2c4c9c52c27ee3145492e8b7bef8af970b91fe0e513a453c98bb"},
      {"build=B1/failures.jsonl", 0, 0, empty_sha256},
      {"build=B1/unreadable.jsonl", 0, 0, empty_sha256},
      {"build=B2/harvests.jsonl", 2, 16, "e91bd3062f38c3f1df2165d987872b022fb39a08c642a6fbc3b862dd2a2aaf24"},
      {"build=B2/records.jsonl", 0, 0, empty_sha256},
      {"build=B2/failures.jsonl", 0, 0, empty_sha256},
      {"build=B2/unreadable.jsonl", 0, 0, empty_sha256},
  };
  for (std::size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(files[i].path, want[i].path);
    EXPECT_EQ(files[i].table, i % 4) << want[i].path;
    EXPECT_EQ(files[i].rows, want[i].rows) << want[i].path;
    EXPECT_EQ(files[i].bytes, want[i].bytes) << want[i].path;
    EXPECT_EQ(files[i].sha256, want[i].sha256) << want[i].path;
    EXPECT_EQ(read(files[i].path).size(), want[i].bytes) << want[i].path;
  }
  EXPECT_FALSE(fs::exists(root / "harvests.jsonl"));
}

TEST_F(scratch_folder, gzip_files_hold_the_rows_and_count_what_was_written) {
  std::vector<table_file_facts> files;
  {
    dataset_writer writer(root, true, true);
    ASSERT_TRUE(writer.write("", {one, "", "", ""}));
    ASSERT_TRUE(writer.write("", {two, "", "", ""}));
    ASSERT_TRUE(writer.close(files));
  }
  ASSERT_EQ(files.size(), 4u);
  EXPECT_EQ(files[0].path, "harvests.jsonl.gz");
  EXPECT_EQ(files[0].rows, 2u);
  const std::string packed = read("harvests.jsonl.gz");
  EXPECT_EQ(files[0].bytes, packed.size());
  EXPECT_NE(files[0].sha256, "e91bd3062f38c3f1df2165d987872b022fb39a08c642a6fbc3b862dd2a2aaf24");
  char plain[64] = {};
  z_stream stream{};
  ASSERT_EQ(inflateInit2(&stream, 15 + 16), Z_OK);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(plain);
  stream.avail_out = sizeof plain;
  EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
  EXPECT_EQ(std::string_view(plain, stream.total_out), "{\"a\":1}\n{\"a\":2}\n");
  inflateEnd(&stream);
  EXPECT_EQ(files[3].path, "unreadable.jsonl.gz");
  EXPECT_EQ(files[3].rows, 0u);
}

TEST_F(scratch_folder, a_table_that_cannot_be_opened_is_named) {
  fs::create_directories(root / "records.jsonl");
  dataset_writer writer(root, false, true);
  EXPECT_EQ(writer.fault(), (root / "records.jsonl").string());
  std::vector<table_file_facts> files;
  EXPECT_FALSE(writer.write("", {one, "", "", ""}));
  EXPECT_FALSE(writer.close(files));
}

}  // namespace
}  // namespace inspect::test
