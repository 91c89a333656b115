#include "inspect/input/input_damage.h"

namespace inspect {

std::string input_label(std::string_view file) {
  return file == "-" ? std::string("standard input") : std::string(file);
}

std::string fault_line(const input_fault& fault) {
  std::string line = "kelvra-inspect: " + input_label(fault.file) + ": ";
  if (!fault.where.empty()) line += fault.where + ": ";
  return line + fault.fault;
}

void damage_log::add(problem found) {
  lost_ = lost_ || loses_input(found);
  if (found_++ < told_at_most && messages_ != nullptr) {
    std::string text = "kelvra-inspect: " + input_label(file_) + ": ";
    if (const std::string where = found.where(); !where.empty()) text += where + ": ";
    text += loses_input(found) ? "warning: " : "note: ";
    text += problem_text(found);
    if (const std::string_view outcome = problem_outcome(found); !outcome.empty())
      text.append("; ").append(outcome);
    std::fprintf(messages_, "%s\n", text.c_str());
  }
  // A flood of damage keeps its count, not every entry.
  if (entries_.size() < kept_at_most) entries_.push_back(std::move(found));
}

void damage_log::finish() {
  if (found_ > told_at_most && messages_ != nullptr)
    std::fprintf(messages_, "kelvra-inspect: %s: %zu more not told\n", input_label(file_).c_str(),
                 found_ - told_at_most);
}

}  // namespace inspect
