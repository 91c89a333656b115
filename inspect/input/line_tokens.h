#pragma once

// The lines of a line form (a harvest capture, "prof-event " lines) as
// tokens: records read from their lines, and for a harvest its banners,
// failure lines and other text. What cannot be read is told to the damage
// log once, here, and passed over: a record line that does not parse, a
// line too long, a last line cut short, text before a harvest's first line
// (a note), the input cut short by a read fault.

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "inspect/input/chunk_buffer.h"
#include "inspect/input/input_damage.h"
#include "inspect/input/input_forms.h"
#include "inspect/input/line_reader.h"

namespace inspect {

enum class token_kind : std::uint8_t { record, banner, failure, text };

struct line_token {
  token_kind kind = token_kind::text;
  std::uint64_t line = 0;
  bool ended = true;      // false: the input ends inside the line
  std::string_view text;  // the line, or a record's lines joined; valid until the next call
  input_record record;    // kind record
  std::size_t request = 0;  // kind banner: its row of layouts::harvest_requests
};

inline constexpr std::string_view failure_start = "Assertion failed: ";

class token_reader {
 public:
  // `input` holds the form's lines from the start of the input. Only record
  // tokens are made when `records_only`.
  token_reader(input_form form, std::unique_ptr<chunk_buffer> input, damage_log& damage,
               bool records_only);

  // False at the end.
  bool next(line_token& token);

  // Whether the input had any line of its form (for a harvest, a banner or
  // a failure line too), read or not: without one it is no such input.
  bool saw_form_line() const noexcept { return started_; }
  // After the end: the input ended inside a line, or a read fault cut it.
  bool cut_short() const noexcept { return cut_short_; }

 private:
  struct held_line {
    std::string text;
    std::uint64_t number;
    bool crlf;
    bool ended;
    bool too_long;
  };

  bool next_line(text_line& line);
  bool join_record(const text_line& first, line_token& token);
  void end_of_input();
  void note_header(std::uint64_t first_harvest_line);

  const form_row& form_;
  std::unique_ptr<chunk_buffer> input_;
  line_reader lines_;
  damage_log& damage_;
  bool records_only_;
  std::deque<held_line> held_;  // lines read ahead for a record's text
  std::string current_;         // a held line handed out
  std::string joined_;          // a record's lines joined
  std::string fault_;  // of the record line last read
  bool started_ = false;        // a line of the form was seen
  bool ended_ = false;
  bool cut_short_ = false;
};

}  // namespace inspect
