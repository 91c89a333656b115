// The pieces under the archive reading: gzip inflated from any byte source,
// a tar's members walked (made here byte by byte, as ustar lays them out),
// and the label sheet.

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <fstream>
#include <tuple>
#include <vector>

#include "inspect/input/gunzip_source.h"
#include "inspect/input/input_captures.h"
#include "inspect/input/label_sheet.h"
#include "inspect/input/tests/test_inputs.h"

namespace {

std::string gzip(const std::string& text) {
  std::string out(compressBound(static_cast<uLong>(text.size())) + 32, '\0');
  z_stream z{};
  deflateInit2(&z, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  z.avail_in = static_cast<uInt>(text.size());
  z.next_out = reinterpret_cast<Bytef*>(out.data());
  z.avail_out = static_cast<uInt>(out.size());
  deflate(&z, Z_FINISH);
  out.resize(z.total_out);
  deflateEnd(&z);
  return out;
}

// Everything a source gives, then "|" and its fault if it ends in one.
std::string drain(inspect::byte_source& source) {
  std::string text, fault;
  char chunk[1000];
  std::size_t got = 0;
  while (source.read(chunk, got, fault) && got != 0) text.append(chunk, got);
  return fault.empty() ? text : text + "|" + fault;
}

TEST(Gunzip, MembersTailsAndFaults) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += inspect_test::hex_line(i % 256) + "\n";
  const std::string packed = gzip(text.substr(0, 5000)) + gzip(text.substr(5000));
  const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
      {"one member", gzip(text), text},
      {"two members", packed, text},
      {"bytes after the last member, let be", gzip(text) + "trailing junk", text},
      {"trailer cut short", packed.substr(0, packed.size() - 4),
       text + "|corrupt gzip data: unexpected end of file"},
      {"empty member", gzip(""), ""},
  };
  for (const auto& [name, content, want] : cases) {
    auto source = inspect::gunzip(inspect::memory_source(content));
    EXPECT_EQ(drain(*source), want) << name;
  }
  std::string corrupt = packed.substr(0, 10) + std::string(200, '\xff');
  auto source = inspect::gunzip(inspect::memory_source(corrupt));
  EXPECT_EQ(drain(*source).substr(0, 20), "|corrupt gzip data: ") << "corrupt";
}

// A ustar member: header and data padded to 512 bytes.
std::string tar_member(const std::string& name, char type, const std::string& data,
                       const std::string& link = "") {
  std::string header(512, '\0');
  name.copy(header.data(), std::min<std::size_t>(name.size(), 100));
  std::snprintf(header.data() + 100, 8, "%07o", 0644);
  std::snprintf(header.data() + 124, 12, "%011o", static_cast<unsigned>(data.size()));
  std::snprintf(header.data() + 136, 12, "%011o", 0u);
  header[156] = type;
  link.copy(header.data() + 157, std::min<std::size_t>(link.size(), 100));
  std::memcpy(header.data() + 257, "ustar\0" "00", 8);
  std::memset(header.data() + 148, ' ', 8);
  unsigned sum = 0;
  for (const char c : header) sum += static_cast<unsigned char>(c);
  std::snprintf(header.data() + 148, 8, "%06o", sum);
  return header + data + std::string((512 - data.size() % 512) % 512, '\0');
}

struct walked {
  std::vector<std::string> captures;  // member names
  std::vector<std::pair<std::string, inspect::member_problem_kind>> problems;
  std::uint64_t passed_over = 0;
};

walked walk(const std::string& bytes, inspect::archive_limits limits = {}) {
  const std::string path = testing::TempDir() + "/archive_input_test";
  std::ofstream(path, std::ios::binary) << bytes;
  static constexpr inspect::input_form forms[] = {inspect::input_form::hex};
  inspect::input_captures captures(path, limits, forms);
  inspect::input_fault fault;
  walked seen;
  EXPECT_TRUE(captures.open(fault));
  EXPECT_TRUE(captures.archive());
  for (inspect::found_capture capture; captures.next(capture);) {
    const std::string text = drain(*capture.source);
    seen.captures.push_back(capture.member.value_or("") + (text.find('|') == std::string::npos ? "" : "!"));
  }
  for (const auto& p : captures.problems()) seen.problems.emplace_back(p.member, p.kind);
  seen.passed_over = captures.passed_over();
  std::remove(path.c_str());
  return seen;
}

TEST(ArchiveWalk, MembersByWhatTheyAre) {
  using kind = inspect::member_problem_kind;
  const std::string capture = inspect_test::hex_line(1) + "\n" + inspect_test::hex_line(2) + "\n";
  const std::string tar =
      tar_member("notes.txt", '0', "plain text\n") + tar_member("dir/", '5', "") +
      tar_member("a/capture.log", '0', capture) + tar_member("link", '2', "", "/etc/passwd") +
      tar_member("hard", '1', "", "a/capture.log") + tar_member("tty", '3', "") +
      tar_member("../escape", '0', capture) + tar_member("/etc/abs", '0', capture) +
      tar_member("b/packed.gz", '0', gzip(capture)) + std::string(1024, '\0');
  const walked seen = walk(tar);
  EXPECT_EQ(seen.captures, (std::vector<std::string>{"a/capture.log", "b/packed.gz"}));
  EXPECT_EQ(seen.passed_over, 1u);
  EXPECT_EQ(seen.problems, (std::vector<std::pair<std::string, kind>>{
                               {"link", kind::link},
                               {"hard", kind::link},
                               {"tty", kind::device},
                               {"../escape", kind::unsafe_name},
                               {"/etc/abs", kind::unsafe_name}}));

  // Cut inside the second capture: the first whole, the damage naming the
  // second (libarchive gives nothing of a member cut within its first block).
  std::string long_capture;
  for (int i = 0; i < 600; ++i) long_capture += inspect_test::hex_line(i % 256) + "\n";
  const std::string two = tar_member("one", '0', capture) + tar_member("two", '0', long_capture);
  const walked cut = walk(two.substr(0, 512 + 512 + 512 + 40000));
  EXPECT_EQ(cut.captures, (std::vector<std::string>{"one"}));
  ASSERT_EQ(cut.problems.size(), 1u);
  EXPECT_EQ(cut.problems[0], std::pair(std::string("two"), kind::damaged));

  // Over the cap: refused from its header; inflated past it: refused as read.
  inspect::archive_limits small;
  small.max_capture_size = capture.size() - 1;
  const walked capped = walk(tar_member("big", '0', capture) + tar_member("big.gz", '0', gzip(capture)) +
                                 std::string(1024, '\0'),
                             small);
  EXPECT_EQ(capped.captures, (std::vector<std::string>{"big.gz!"}));
  EXPECT_EQ(capped.problems, (std::vector<std::pair<std::string, kind>>{
                                 {"big", kind::too_large}, {"big.gz", kind::too_large}}));
}

TEST(LabelSheet, ReadsAndRefuses) {
  inspect::label_sheet sheet;
  inspect::sheet_problem problem;
  ASSERT_TRUE(inspect::read_label_sheet(
      "\xef\xbb\xbf" "capture,build,note\r\na.txt,B1,\" two\nlines, \"\"quoted\"\"\"\r\nb.txt,,x",
      sheet, problem))
      << inspect::sheet_problem_text(problem);
  EXPECT_EQ(sheet.columns, (std::vector<std::string>{"build", "note"}));
  ASSERT_NE(sheet.find("a.txt", ""), nullptr);
  EXPECT_EQ(*sheet.find("a.txt", ""), (std::vector<std::string>{"B1", " two\nlines, \"quoted\""}));
  EXPECT_EQ(*sheet.find("b.txt", ""), (std::vector<std::string>{"", "x"}));
  EXPECT_EQ(sheet.find("c.txt", ""), nullptr);

  using kind = inspect::sheet_problem_kind;
  const std::string sha(64, 'a');
  const std::vector<std::tuple<std::string, kind, std::uint64_t>> refused = {
      {"", kind::empty, 1},
      {"path,x\n", kind::first_column, 1},
      {"capture,x,y,x\n", kind::duplicate_column, 1},
      {"capture,x\na,1\nb,\"2\n\"\na,3\n", kind::duplicate_capture, 5},
      {"capture_sha256,x\n" + sha + ",1\n" + std::string(64, 'A') + ",2\n", kind::duplicate_capture, 3},
      {"capture_sha256,x\nabc,1\n", kind::bad_sha256, 2},
      {"capture,x\na,1,2\n", kind::field_count, 2},
      {"capture,x\n,1\n", kind::empty_key, 2},
      {"capture,x\na,\"open\n", kind::syntax, 2},
      {"capture,x\na,b\"c\n", kind::syntax, 2},
  };
  for (const auto& [text, want, line] : refused) {
    EXPECT_FALSE(inspect::read_label_sheet(text, sheet, problem)) << text;
    EXPECT_EQ(problem.kind, want) << text;
    EXPECT_EQ(problem.line, line) << text;
  }
}

}  // namespace
