#include <array>
#include <utility>

#include "inspect/input/record_input.h"

namespace inspect {

namespace {

constexpr std::array<std::pair<input_form, std::string_view>, 3> form_names{{
    {input_form::harvest, "harvest"},
    {input_form::hex, "hex"},
    {input_form::raw, "raw"},
}};

}  // namespace

std::string_view form_name(input_form form) {
  for (const auto& [known, name] : form_names) {
    if (known == form) return name;
  }
  return "unknown";
}

std::optional<input_form> form_of_name(std::string_view name) {
  for (const auto& [form, known] : form_names) {
    if (known == name) return form;
  }
  return std::nullopt;
}

std::string fault_line(const input_fault& fault) {
  std::string line = "kelvra-inspect: ";
  line += fault.file == "-" ? "standard input" : fault.file;
  line += ": ";
  if (!fault.where.empty()) {
    line += fault.where;
    line += ": ";
  }
  line += fault.fault;
  return line;
}

}  // namespace inspect
