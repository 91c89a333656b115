// A profile line's byte list, read against a reference that splits the list
// at its commas and reads each item as the words say: digits only, at most
// 255, 48 of them, then "}" or the calendar item.

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "inspect/input/record_lines.h"

namespace {

constexpr std::string_view head = "{  'category':'x', 'binary-data':[";

std::optional<std::vector<int>> reference(const std::string& list, const std::string& tail) {
  if (tail != "}" && !(tail.starts_with(inspect::calendar_item_start) && tail.ends_with("'}") &&
                       tail.size() >= inspect::calendar_item_start.size() + 2))
    return std::nullopt;
  std::vector<int> bytes;
  std::size_t at = 0;
  while (at <= list.size()) {
    const std::size_t comma = std::min(list.find(',', at), list.size());
    const std::string item = list.substr(at, comma - at);
    if (item.empty() || item.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    const std::size_t digits = item.find_first_not_of('0');
    if (digits != std::string::npos && item.size() - digits > 3) return std::nullopt;
    const int value = digits == std::string::npos ? 0 : std::stoi(item.substr(digits));
    if (value > 255) return std::nullopt;
    bytes.push_back(value);
    at = comma + 1;
  }
  if (bytes.size() != 48) return std::nullopt;
  return bytes;
}

void expect_as_reference(const std::string& list, const std::string& tail) {
  const std::string line = std::string(head) + list + "]" + tail;
  inspect::input_record record;
  std::string fault;
  const bool read = inspect::parse_profile_line(line, record, fault);
  const auto expected = reference(list, tail);
  ASSERT_EQ(read, expected.has_value()) << line << " / " << fault;
  if (!read) return;
  for (std::size_t i = 0; i < 48; ++i) ASSERT_EQ(record.bytes[i], (*expected)[i]) << line;
}

std::string joined(const std::vector<std::string>& items) {
  std::string list;
  for (const std::string& item : items) list += (list.empty() ? "" : ",") + item;
  return list;
}

TEST(ProfileLine, ListsAsTheReferenceReadsThem) {
  const std::string calendar = std::string(inspect::calendar_item_start) + "Mar 14 09:26:52.996300'}";
  // Items at the list's first, middle and last place, before either tail.
  const std::string odd[] = {"0",   "9",    "10",  "99",  "100", "255", "256", "999", "1000",
                             "00",  "007",  "0255", "0256", "00000000000000000001", "",
                             "+5",  "-1",   " 5",  "5 ",  "x",   "1e2"};
  for (const std::string& tail : {std::string("}"), calendar, std::string(""), std::string("} ")})
    for (const std::string& item : odd)
      for (const std::size_t place : {0, 23, 47}) {
        std::vector<std::string> items(48, "7");
        items[place] = item;
        expect_as_reference(joined(items), tail);
      }
  for (const int count : {0, 1, 47, 49})
    expect_as_reference(joined(std::vector<std::string>(static_cast<std::size_t>(count), "1")), "}");
  expect_as_reference(joined(std::vector<std::string>(48, "1")) + ",", "}");

  // Random lists of every width, now and then an odd item.
  std::mt19937 random(29);
  for (int n = 0; n < 3000; ++n) {
    std::vector<std::string> items(46 + random() % 5);
    for (std::string& item : items) {
      item = std::to_string(random() % (random() % 4 == 0 ? 1000 : 256));
      if (random() % 50 == 0) item = odd[random() % std::size(odd)];
    }
    expect_as_reference(joined(items), random() % 2 ? calendar : "}");
  }
}

}  // namespace
