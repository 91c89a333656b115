#include "inspect/capture/failure_lines.h"

#include <charconv>
#include <span>

#include "inspect/input/line_tokens.h"

namespace inspect {
namespace {

using layouts::failure_site;

constexpr std::string_view check_start = "Check failed: ";
constexpr std::string_view function_text = "bail ";

// Every site a harvest writes a line at, with the request it belongs to.
struct known_site {
  const failure_site* site;
  std::optional<request> about;
};

std::vector<known_site> known_sites() {
  std::vector<known_site> sites;
  for (const failure_site& site : layouts::one_shot_sites) sites.push_back({&site, std::nullopt});
  sites.push_back({&layouts::events_failed, request::profile_events});
  for (const failure_site& site : layouts::profiler_open_sites)
    sites.push_back({&site, request::profiler_log});
  sites.push_back({&layouts::profiler_failed, request::profiler_log});
  for (const failure_site& site : layouts::hid_device_sites)
    sites.push_back({&site, request::hid_device});
  for (const layouts::harvest_request& row : layouts::harvest_requests)
    if (row.step_failure.line != 0 && row.step_failure.module == "kelvra")
      sites.push_back({&row.step_failure, row.id});
  return sites;
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

bool parse_failure_line(std::string_view line, failure_parse& parsed, std::string& fault) {
  static const std::vector<known_site> sites = known_sites();
  parsed = {};
  failure_line& failure = parsed.failure;
  std::string_view rest = line;
  if (!rest.starts_with(failure_start)) {
    fault = "not a failure line";
    return false;
  }
  rest.remove_prefix(failure_start.size());
  const layouts::module_source* owner = nullptr;
  for (const layouts::module_source& candidate : layouts::module_sources)
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

  const known_site* known = nullptr;
  for (const known_site& candidate : sites)
    if (candidate.site->module == owner->module && candidate.site->line == source_line)
      known = &candidate;
  if (known == nullptr || known->site == &layouts::profiler_no_service) {
    fault = "no failure of a harvest is written at " + std::string(owner->source) + ":" +
            std::to_string(source_line);
    return false;
  }
  const failure_site& site = *known->site;
  parsed.site = &site;
  parsed.about = known->about;
  failure.module = owner->module;
  failure.check = site.check;
  failure.source = owner->source;
  failure.source_line = source_line;
  failure.about = known->about.value_or(request::stats);
  failure.kind = site.kind;
  failure.text = line;
  if (site.value != parsed.has_value) {
    fault = site.value ? "failure line lacks its error value"
                       : "failure line carries an error value it cannot have";
    return false;
  }
  // Written again from its parts, the line must be the same.
  std::string made = std::string(failure_start) + failure.module + ": " + std::string(check_start) +
                     failure.check + " " + std::string(function_text);
  if (site.message) made += failure.error_text + " ";
  made += failure.source + ":" + number_text(source_line, parsed.hex_line_number);
  if (parsed.has_value) made += " " + failure.error_text + " (" + hex_text(failure.value) + ")";
  if (made != line) {
    fault = "failure line is not as the collector writes it";
    return false;
  }
  return true;
}

}  // namespace inspect
