#include "inspect/input/input_forms.h"

#include <algorithm>
#include <array>

#include "quandor/layouts/harvest_requests.h"

namespace inspect {
namespace {

// The collector writes no NUL: its lines are C strings.
bool has_nul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

// Calls `found` with each line of `text` until it says yes.
template <class Found>
bool any_line(std::string_view text, Found found) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (found(line)) return true;
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return false;
}

bool harvest_line(std::string_view line) {
  if (line.starts_with(profile_line_start) || line.starts_with("Assertion failed: kelvra: ") ||
      line.starts_with("Assertion failed: varnel: "))
    return true;
  return std::any_of(std::begin(layouts::harvest_requests), std::end(layouts::harvest_requests),
                     [&](const layouts::harvest_request& r) {
                       return !r.banner.empty() && line == r.banner;
                     });
}

bool probe_harvest(std::string_view start) {
  return !has_nul(start) && any_line(start, harvest_line);
}

bool probe_hex(std::string_view start) {
  return !has_nul(start) &&
         any_line(start, [](std::string_view line) { return line.starts_with(hex_line_start); });
}

// Tab, line ends, form feed and escape (colour) appear in text; the rest of
// the control bytes do not.
constexpr std::array<bool, 256> binary_bytes = [] {
  std::array<bool, 256> table{};
  for (int c = 0; c < 0x20; ++c) table[static_cast<std::size_t>(c)] = c < 0x09 || (c >= 0x0e && c != 0x1b);
  return table;
}();

bool probe_raw(std::string_view start) {
  return std::any_of(start.begin(), start.end(),
                     [](char c) { return binary_bytes[static_cast<unsigned char>(c)]; });
}

constexpr form_row forms[] = {
    {input_form::harvest, "harvest", probe_harvest, profile_line_start, parse_profile_line},
    {input_form::hex, "hex", probe_hex, hex_line_start, parse_hex_line},
    {input_form::raw, "raw", probe_raw, "", nullptr},
};

}  // namespace

const form_row& form_of(input_form form) {
  for (const form_row& row : forms)
    if (row.form == form) return row;
  return forms[0];
}

std::optional<input_form> form_of_name(std::string_view name) {
  for (const form_row& row : forms)
    if (row.name == name) return row.form;
  return std::nullopt;
}

std::optional<input_form> detect_form(std::string_view start) {
  start = start.substr(0, detection_size);
  for (const form_row& row : forms)
    if (row.probe(start)) return row.form;
  return std::nullopt;
}

}  // namespace inspect
