// A --labels sheet: read, or refused with a line within the text; read, every
// row has a value per label column and is found by its own key.

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "inspect/input/label_sheet.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  inspect::label_sheet sheet;
  inspect::sheet_problem problem;
  if (!inspect::read_label_sheet(text, sheet, problem)) {
    const auto lines = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
    if (problem.line == 0 || problem.line > lines + 1) __builtin_trap();
    if (inspect::sheet_problem_text(problem).empty()) __builtin_trap();
    return 0;
  }
  for (const auto& [key, values] : sheet.rows) {
    if (key.empty() || values.size() != sheet.columns.size()) __builtin_trap();
    if (sheet.find(key, key) != &values) __builtin_trap();
  }
  return 0;
}
