#include <cstdio>
#include <fstream>
#include <sstream>

#include "inspect/capture/capture_reader.h"
#include "inspect/capture/phone_additions.h"
#include "inspect/capture/phone_writer.h"
#include "inspect/commands.h"
#include "inspect/output_buffer.h"

namespace inspect {

int run_phone(const capture_settings& settings, const std::string& additions) {
  capture_model model;
  input_fault fault;
  if (!read_capture(settings.input, {settings.year}, model, fault)) {
    std::fprintf(stderr, "%s\n", fault_line(fault).c_str());
    return 2;
  }
  std::string description;
  phone_fault phone;
  if (!write_phone(model, description, phone)) {
    std::fprintf(stderr, "%s\n",
                 fault_line({settings.input, "line " + std::to_string(phone.line), phone.message}).c_str());
    return 2;
  }
  if (!additions.empty()) {
    std::ifstream file(additions, std::ios::binary);
    if (!file.is_open()) {
      std::fprintf(stderr, "%s\n", fault_line({additions, "file", "cannot be opened"}).c_str());
      return 2;
    }
    std::ostringstream text;
    text << file.rdbuf();
    addition_fault added;
    if (!add_to_phone(description, text.str(), added)) {
      std::fprintf(stderr, "%s\n", fault_line({additions, added.where, added.message}).c_str());
      return 2;
    }
  }
  return write_output(settings.output, description);
}

}  // namespace inspect
