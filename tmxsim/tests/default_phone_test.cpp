// The built-in default phone answers the button statistics request.

#include <nlohmann/json.hpp>

#include <array>
#include <vector>

#include "sim_test_support.h"

namespace {

using json = nlohmann::json;
using bytes = std::vector<std::uint8_t>;

// The bytes an ANSWER describes: "reply" as hex pairs, or "fields" laid end to
// end in little-endian order.
bytes reply_of(const json& answer) {
  bytes out;
  if (answer.contains("reply")) {
    std::string digits;
    for (const char c : answer["reply"].get<std::string>())
      if (c != ' ' && c != '\t') digits += c;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
      out.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  const std::array<std::pair<const char*, int>, 5> integers = {
      {{"u8", 1}, {"u16", 2}, {"u32", 4}, {"i32", 4}, {"u64", 8}}};
  for (const json& piece : answer.value("fields", json::array())) {
    for (const auto& [key, size] : integers)
      if (piece.contains(key)) {
        const auto value = piece[key].is_number_unsigned()
                               ? piece[key].get<std::uint64_t>()
                               : static_cast<std::uint64_t>(piece[key].get<std::int64_t>());
        for (int i = 0; i < size; ++i) out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
      }
    if (piece.contains("zeros")) out.resize(out.size() + piece["zeros"].get<std::size_t>());
    if (piece.contains("hex")) {
      const bytes hex = reply_of(json{{"reply", piece["hex"]}});
      out.insert(out.end(), hex.begin(), hex.end());
    }
    if (piece.contains("text")) {
      std::string text = piece["text"].get<std::string>();
      text.resize(piece["size"].get<std::size_t>(), '\0');
      out.insert(out.end(), text.begin(), text.end());
    }
  }
  return out;
}

const json& button_service(const json& phone) {
  for (const json& service : phone["services"])
    if (service["name"] == "ZOL_zol-button") return service;
  throw std::runtime_error("the default phone has no ZOL_zol-button");
}

CFMutableDictionaryRef by_name(const char* name) {
  return with(IOServiceMatching("CorvelTMXInterface"), "IONameMatch", make_string(name));
}

CFMutableDictionaryRef by_id(int id) {
  CFMutableDictionaryRef wanted = CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
  with(wanted, "service_id", make_int(id));
  return with(IOServiceMatching("CorvelTMXInterface"), "IOPropertyMatch", wanted);
}

long long service_id(io_service_t service) {
  long long id = -1;
  CFTypeRef number = IORegistryEntryCreateCFProperty(service, CFSTR("service_id"), nullptr, 0);
  if (number != nullptr) {
    CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberLongLongType, &id);
    CFRelease(number);
  }
  return id;
}

TEST(default_phone, statistics_of_zol_button_by_name_and_by_id) {
  tmxsim::load_default_description();
  const json phone = json::parse(tmxsim::default_description());
  const json& button = button_service(phone);
  const int id = button["properties"]["service_id"].get<int>();
  const json& answer = button["commands"]["215"];
  const bytes expected = reply_of(answer.is_array() ? answer[0] : answer);
  ASSERT_GE(expected.size(), 282u);

  const io_service_t named = lookup(by_name("ZOL_zol-button"));
  const io_service_t numbered = lookup(by_id(id));
  ASSERT_NE(named, 0u);
  ASSERT_NE(numbered, 0u);
  EXPECT_EQ(service_id(named), id);
  EXPECT_EQ(service_id(numbered), id);

  io_connect_t connection = 0;
  ASSERT_EQ(IOServiceOpen(numbered, mach_task_self(), 0, &connection), KERN_SUCCESS);
  bytes record(4096, 0);
  std::size_t size = record.size();
  EXPECT_EQ(command(connection, 215, record.data(), &size), KERN_SUCCESS);
  record.resize(size);
  EXPECT_EQ(record, expected);

  IOServiceClose(connection);
  IOObjectRelease(numbered);
  IOObjectRelease(named);
  EXPECT_EQ(audit_text(), all_clear);
}

}  // namespace
