#include <charconv>

#include "inspect/input/record_lines.h"

namespace inspect {

namespace {

constexpr std::string_view data_start = " 'binary-data':[";
constexpr std::string_view calendar_end = "'}";
constexpr std::size_t record_size = 48;
// A value quoted in a fault is cut here: it may be thousands of digits.
constexpr std::size_t longest_quoted_value = 20;

// The last `c` before `end`, or npos. Sixteen bytes a time, in a loop the
// compiler makes vector code of: the list to pass over is some 200 bytes.
std::size_t last_of(std::string_view text, char c, std::size_t end) {
  constexpr std::size_t block = 16;
  while (end >= block) {
    const char* const start = text.data() + end - block;
    unsigned char found = 0;
    for (std::size_t i = 0; i < block; ++i) found |= start[i] == c ? 1 : 0;
    if (found != 0) break;
    end -= block;
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
  if (at != end && *at == ']') {
    ++at;
  } else {
    for (;;) {
      unsigned value = 0;
      const auto [past, error] = std::from_chars(at, end, value);
      if (past == at) return not_a_list(fault);
      if (error != std::errc{} || value > 255) {
        return not_a_byte({at, static_cast<std::size_t>(past - at)}, fault);
      }
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
