#pragma once

// An input opened for reading: its form told from its start (or given), its
// first bytes held for look-ahead, its records read back one at a time.

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "inspect/input/byte_source.h"
#include "inspect/input/chunk_buffer.h"
#include "inspect/input/input_damage.h"
#include "inspect/input/input_forms.h"
#include "inspect/input/record_lines.h"

namespace inspect {

struct opened_input {
  input_form form = input_form::harvest;
  std::unique_ptr<chunk_buffer> buffer;  // holds at least the detection window
};

struct input_settings {
  std::optional<input_form> form;  // told from the content when empty
  std::FILE* progress = nullptr;   // where a progress line goes, if anywhere
};

// None, with `fault`, when nothing can be made of the input: it cannot be
// read, it is empty, or no form's probe knows it.
std::optional<opened_input> open_input(std::unique_ptr<byte_source> source, const std::string& file,
                                       const input_settings& settings, input_fault& fault);

class record_reader {
 public:
  virtual ~record_reader() = default;
  // The next intact record; false at the end. Damage goes to the log.
  virtual bool next(input_record& record) = 0;
  // After the end: whether the input held anything of its form at all.
  virtual bool found_form() const = 0;
};

std::unique_ptr<record_reader> read_records(opened_input input, damage_log& damage);

// Raw records, 48 bytes each, end to end.
std::unique_ptr<record_reader> read_raw_records(std::unique_ptr<chunk_buffer> input,
                                                damage_log& damage);

}  // namespace inspect
