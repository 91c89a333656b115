#include <cstdint>
#include <cstring>

#include "inspect/input/record_lines.h"

namespace inspect {

namespace {

constexpr std::string_view data_start = " 'binary-data':[";
constexpr std::string_view calendar_end = "'}";
constexpr std::size_t record_size = 48;
// A value quoted in a fault is cut here: it may be thousands of digits.
constexpr std::size_t longest_quoted_value = 20;

// The last `c` before `end`, or npos. 32 bytes a time, as four words tested
// for a byte equal to `c`: the list to pass over is some 200 bytes.
std::size_t last_of(std::string_view text, char c, std::size_t end) {
  constexpr std::uint64_t ones = 0x0101010101010101, highs = 0x8080808080808080;
  const std::uint64_t pattern = ones * static_cast<unsigned char>(c);
  const auto has = [&](const char* at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    word ^= pattern;
    return ((word - ones) & ~word & highs) != 0;
  };
  while (end >= 32) {
    const char* const start = text.data() + end - 32;
    if (has(start) || has(start + 8) || has(start + 16) || has(start + 24)) break;
    end -= 32;
  }
  while (end != 0) {
    if (text[--end] == c) return end;
  }
  return std::string_view::npos;
}

// Where the last " 'binary-data':[" ends. Text fields before it may hold
// anything, the same words included.
std::size_t after_last_data_start(std::string_view line) {
  std::size_t bracket = line.size();
  while ((bracket = last_of(line, '[', bracket)) != std::string_view::npos) {
    const std::size_t end = bracket + 1;
    if (end >= data_start.size() &&
        line.substr(end - data_start.size(), data_start.size()) == data_start) {
      return end;
    }
  }
  return std::string_view::npos;
}

bool not_a_byte(std::string_view digits, std::string& fault) {
  fault = "binary-data value ";
  fault += digits.substr(0, longest_quoted_value);
  if (digits.size() > longest_quoted_value) fault += "...";
  fault += " is not a byte";
  return false;
}

bool not_a_list(std::string& fault) {
  fault = "binary-data is not a list of decimal numbers";
  return false;
}

unsigned digit(char c) { return static_cast<unsigned char>(c) - 48u; }

// The list as the phone prints it: 48 values of one to three digits, each
// before a comma, the last before the bracket. Read at once; anything else
// is left to the careful loop, which names the fault. Returns past the
// bracket, or null.
const char* printed_list(const char* at, const char* end, std::uint8_t* bytes) {
  // A run of digits, or a comma, stops before the line's last byte when that
  // is neither: then no read below passes the end.
  if (at == end || digit(end[-1]) <= 9 || end[-1] == ',') return nullptr;
  const auto value_at = [&](std::uint8_t& byte) {
    unsigned value = digit(at[0]);
    if (value > 9) return false;
    if (const unsigned second = digit(at[1]); second <= 9) {
      value = value * 10 + second;
      if (const unsigned third = digit(at[2]); third <= 9) {
        value = value * 10 + third;
        if (value > 255 || digit(at[3]) <= 9) return false;
        ++at;
      }
      ++at;
    }
    ++at;
    byte = static_cast<std::uint8_t>(value);
    return true;
  };
  for (std::size_t i = 0; i + 1 < record_size; ++i)
    if (!value_at(bytes[i]) || *at++ != ',') return nullptr;
  if (!value_at(bytes[record_size - 1]) || *at++ != ']') return nullptr;
  return at;
}

}  // namespace

bool parse_profile_line(std::string_view line, input_record& record, std::string& fault) {
  const std::size_t start = after_last_data_start(line);
  if (start == std::string_view::npos) {
    fault = "no binary-data";
    return false;
  }
  const char* at = line.data() + start;
  const char* const end = line.data() + line.size();
  std::size_t count = 0;
  if (const char* list_end = printed_list(at, end, record.bytes.data())) {
    at = list_end;
    count = record_size;
  } else if (at != end && *at == ']') {
    ++at;
  } else {
    for (;;) {
      const char* past = at;
      unsigned value = 0;
      for (; past != end && digit(*past) <= 9; ++past)
        if (value <= 255) value = value * 10 + digit(*past);
      if (past == at) return not_a_list(fault);
      if (value > 255) return not_a_byte({at, static_cast<std::size_t>(past - at)}, fault);
      // Values past the 48th are counted for the fault, not kept.
      if (count < record_size) record.bytes[count] = static_cast<std::uint8_t>(value);
      ++count;
      at = past;
      if (at == end) return not_a_list(fault);
      if (*at++ == ']') break;
      if (at[-1] != ',') return not_a_list(fault);
    }
  }
  if (count != record_size) {
    fault = "binary-data holds " + std::to_string(count) + " values, not 48";
    return false;
  }
  const std::string_view rest(at, static_cast<std::size_t>(end - at));
  if (rest == "}") {
    record.calendar_text.reset();
    return true;
  }
  if (rest.size() >= calendar_item_start.size() + calendar_end.size() &&
      rest.starts_with(calendar_item_start) && rest.ends_with(calendar_end)) {
    const std::string_view text = rest.substr(
        calendar_item_start.size(), rest.size() - calendar_item_start.size() - calendar_end.size());
    if (text.find('\'') == std::string_view::npos) {
      record.calendar_text = text;
      return true;
    }
  }
  fault = "unexpected text after binary-data";
  return false;
}

}  // namespace inspect
