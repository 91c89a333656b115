#include "inspect/capture/failure_text.h"

#include <array>
#include <charconv>

namespace inspect {
namespace {

constexpr std::string_view check_start = "Check failed: ";
constexpr std::string_view function_text = "bail ";

// Every failure line a harvest can write, by module and source line.
struct known_failure {
  std::string_view module;
  std::int64_t source_line;
  std::string_view check;
  bool message;  // the error text also stands as the message
  bool value;
  request about;
  failure_kind kind;
};

constexpr known_failure known_failures[] = {
    {"varnel", 2903, "service", false, false, request::stats, failure_kind::service_missing},
    {"varnel", 2906, "kr == 0 ", true, true, request::stats, failure_kind::open_failed},
    {"varnel", 2907, "connect", false, false, request::stats, failure_kind::zero_connection},
    {"varnel", 2910, "kr == 0 ", true, true, request::stats, failure_kind::command_failed},
    {"varnel", 1871, "result == 0 ", false, true, request::profile_events, failure_kind::step_failed},
    {"varnel", 1946, "child", false, false, request::profiler_log, failure_kind::no_child},
    {"varnel", 1949, "kr == 0 ", true, true, request::profiler_log, failure_kind::open_failed},
    {"varnel", 2239, "kr == 0 ", true, true, request::profiler_log, failure_kind::command_failed},
    {"kelvra", 130, "kr == 0 ", false, true, request::stats, failure_kind::step_failed},
    {"kelvra", 148, "kr == 0 ", false, true, request::lyn_state, failure_kind::step_failed},
    {"kelvra", 153, "kr == 0 ", false, true, request::btmspk_state, failure_kind::step_failed},
    {"kelvra", 159, "kr == 0 ", false, true, request::button_counts, failure_kind::step_failed},
    {"kelvra", 164, "kr == 0 ", false, true, request::button_enables, failure_kind::step_failed},
    {"kelvra", 189, "kr == 0 ", false, true, request::assets, failure_kind::step_failed},
    {"kelvra", 211, "devicePairs", false, false, request::hid_device, failure_kind::device_failed},
    {"kelvra", 215, "matching", false, false, request::hid_device, failure_kind::device_failed},
    {"kelvra", 221, "service", false, false, request::hid_device, failure_kind::device_missing},
    {"kelvra", 224, "device", false, false, request::hid_device, failure_kind::device_failed},
    {"kelvra", 227, "result == 0 ", false, true, request::hid_device, failure_kind::device_failed},
    {"kelvra", 232, "result == 0 ", false, true, request::hid_report, failure_kind::command_failed},
    {"kelvra", 238, "result == 0 ", false, true, request::hid_report, failure_kind::command_failed},
    {"kelvra", 244, "result == 0 ", false, true, request::hid_report, failure_kind::command_failed},
    {"kelvra", 250, "result == 0 ", false, true, request::hid_report, failure_kind::command_failed},
    {"kelvra", 256, "result == 0 ", false, true, request::hid_report, failure_kind::command_failed},
    {"kelvra", 262, "result == 0 ", false, true, request::hid_report, failure_kind::command_failed},
};

constexpr std::array<std::uint8_t, 6> report_ids = {0xe0, 0xb4, 0xe1, 0xe2, 0xe3, 0xe4};

struct module_source {
  std::string_view module;
  std::string_view source;
};
constexpr module_source module_sources[] = {
    {"kelvra", "kelvra/kelvra"},
    {"varnel", "quandor/varnel"},
};

std::string hex_text(std::uint64_t value) {
  char digits[20];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  return "0x" + std::string(digits, end);
}

std::string number_text(std::int64_t value, bool hex) {
  return hex ? hex_text(static_cast<std::uint64_t>(value)) : std::to_string(value);
}

bool read_number(std::string_view text, std::int64_t& value) {
  int base = 10;
  if (text.starts_with("0x")) {
    text.remove_prefix(2);
    base = 16;
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  return !text.empty() && error == std::errc{} && end == text.data() + text.size();
}

}  // namespace

bool parse_failure_line(std::string_view line, bool hex_numbers, failure_parse& parsed,
                        std::string& fault) {
  parsed = {};
  failure_line& failure = parsed.failure;
  std::string_view rest = line;
  rest.remove_prefix(failure_start.size());
  const module_source* owner = nullptr;
  for (const module_source& candidate : module_sources)
    if (rest.starts_with(candidate.module) && rest.substr(candidate.module.size()).starts_with(": "))
      owner = &candidate;
  if (owner == nullptr) {
    fault = "failure line of no module the collector has";
    return false;
  }
  rest.remove_prefix(owner->module.size() + 2);

  // The source and its line: the last "SOURCE:" in the line.
  const std::string source_mark = std::string(owner->source) + ":";
  const std::size_t at = rest.rfind(source_mark);
  if (!rest.starts_with(check_start) || at == std::string_view::npos) {
    fault = "failure line without its check or source";
    return false;
  }
  std::string_view tail = rest.substr(at + source_mark.size());
  const std::size_t blank = tail.find(' ');
  std::int64_t source_line = 0;
  if (!read_number(tail.substr(0, blank), source_line)) {
    fault = "failure line's source line is no number";
    return false;
  }
  parsed.hex_line_number = tail.starts_with("0x");
  std::string_view value_part = blank == std::string_view::npos ? "" : tail.substr(blank);
  if (!value_part.empty()) {
    // " TEXT (0xVALUE)"
    const std::size_t open = value_part.rfind(" (0x");
    std::int64_t value = 0;
    if (open == std::string_view::npos || !value_part.ends_with(')') ||
        !read_number(value_part.substr(open + 2, value_part.size() - open - 3), value) ||
        value <= 0 || value > 0xffffffff) {
      fault = "failure line's error value is not \" TEXT (0xVALUE)\"";
      return false;
    }
    failure.value = static_cast<std::uint32_t>(value);
    failure.error_text = value_part.substr(1, open - 1);
    parsed.has_value = true;
  }

  const known_failure* known = nullptr;
  for (const known_failure& candidate : known_failures)
    if (candidate.module == owner->module && candidate.source_line == source_line) known = &candidate;
  if (known == nullptr) {
    fault = "no failure of a harvest is written at " + std::string(owner->source) + ":" +
            std::to_string(source_line);
    return false;
  }
  failure.module = owner->module;
  failure.check = known->check;
  failure.source = owner->source;
  failure.source_line = source_line;
  failure.about = known->about;
  failure.kind = known->kind;
  if (known->about == request::hid_report)
    failure.report_id = report_ids[static_cast<std::size_t>((source_line - 232) / 6)];
  failure.text = line;
  if (known->value != parsed.has_value) {
    fault = known->value ? "failure line lacks its error value" : "failure line carries an error value it cannot have";
    return false;
  }
  if (parsed.hex_line_number != hex_numbers) {
    fault = hex_numbers ? "line number in decimal after a failure line set hexadecimal"
                        : "line number in hexadecimal before any failure line set it";
    return false;
  }
  // Written again from its parts, the line must be the same.
  std::string made = std::string(failure_start) + failure.module + ": " + std::string(check_start) +
                     failure.check + " " + std::string(function_text);
  if (known->message) made += failure.error_text + " ";
  made += failure.source + ":" + number_text(source_line, hex_numbers);
  if (parsed.has_value) made += " " + failure.error_text + " (" + hex_text(failure.value) + ")";
  if (made != line) {
    fault = "failure line is not as the collector writes it";
    return false;
  }
  return true;
}

}  // namespace inspect
