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

std::string damage::where() const {
  if (byte) return "byte " + std::to_string(*byte);
  if (line == 0) return {};
  if (last_line > line) return "lines " + std::to_string(line) + "-" + std::to_string(last_line);
  return "line " + std::to_string(line);
}

void damage_log::add(damage found) {
  lost_ = lost_ || found.lost;
  if (found_++ < told_at_most && messages_ != nullptr) {
    std::string text = "kelvra-inspect: " + input_label(file_) + ": ";
    if (const std::string where = found.where(); !where.empty()) text += where + ": ";
    text += found.lost ? "warning: " : "note: ";
    text += found.fault;
    if (!found.outcome.empty()) text += "; " + found.outcome;
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
