#pragma once

// The harvest grammar over a capture's lines, shared by the files of the
// capture reader: one step of the collection sequence a file. Where the
// capture does not read as the collector writes, the damage is told and the
// parser takes up again at the next line it knows (a banner, a failure line
// or a profile line): a step that lost its lines is missing, a line of an
// earlier step starts a new harvest, the end of the capture cuts the
// harvest short.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/capture/capture_model.h"
#include "inspect/capture/failure_lines.h"
#include "inspect/input/line_tokens.h"

namespace inspect {

struct capture_line {
  token_kind kind = token_kind::text;
  std::uint64_t number = 0;
  std::string_view text;
  std::size_t request = 0;  // a banner's row
  std::size_t record = 0;   // a record's index in the parser's records
};

struct capture_record {
  std::array<std::uint8_t, 48> bytes{};
  std::uint64_t line = 0;
  std::uint64_t last_line = 0;
  std::optional<std::string_view> calendar_text;
  std::string_view text;  // the whole line (lines joined)
};

// The heading a state dump's printer starts with.
std::string state_heading(const layouts::harvest_request& entry);

constexpr std::size_t row_of(request about) { return static_cast<std::size_t>(about); }

// The result a request that printed nothing shows when only standard
// output was captured.
inline constexpr std::uint32_t unseen_refusal = 0xe00002c7;
inline constexpr std::uint32_t service_not_found = 0xe00002f0;

class capture_parser {
 public:
  // `cut_short`: the input ends inside a line, so its end says nothing of
  // what the harvest did.
  capture_parser(std::vector<capture_line> lines, std::vector<capture_record> records,
                 capture_model& model, damage_log& damage, const year_preference& years,
                 const zone_rules& zone, bool cut_short);

  void run();

 private:
  // The access layer's own line before a step's, if it wrote one.
  struct access_result {
    call_outcome outcome = call_outcome::reply;
    std::uint32_t value = 0;
    std::uint64_t line = 0;

    bool failed() const {
      return outcome != call_outcome::reply && outcome != call_outcome::zero_connection;
    }
    std::uint32_t step_value() const {
      return outcome == call_outcome::missing ? service_not_found : value;
    }
  };

  // capture_reader.cpp: the cursor, damage and recovery.
  bool done() const { return at_ >= lines_.size(); }
  const capture_line* line_at(std::size_t at) const {
    return at < lines_.size() ? &lines_[at] : nullptr;
  }
  std::string_view peek() const { return done() ? std::string_view{} : lines_[at_].text; }
  std::uint64_t number() const;
  bool at_banner(request about) const;
  bool at_failure() const { return !done() && lines_[at_].kind == token_kind::failure; }
  bool at_record() const { return !done() && lines_[at_].kind == token_kind::record; }
  // Where a request that printed nothing may have failed out of sight: at
  // the end or at a line the grammar knows, not inside damage.
  bool at_known_line() const { return done() ? !cut_short_ : lines_[at_].kind != token_kind::text; }
  void add_damage(problem found);
  bool read_harvest();
  // The harvest cannot go on at the cursor: damage is told, the lines that
  // no step knows are passed over. True: go on at `here` (the lines expected
  // are missing); the harvest ends (false) when the capture does or the
  // cursor starts a new one; `jump_` is set when the cursor belongs to a
  // later request.
  bool recover(std::size_t here, const std::string& expected);
  std::optional<std::size_t> anchor_row(std::size_t at) const;
  bool block_starts(std::size_t row, std::size_t at) const;
  void cut_harvest(const std::string& expected);

  bool parse_failure(std::size_t at, failure_parse& parsed) const;
  bool take_failure(failure_parse& parsed);
  bool peek_failure(std::span<const layouts::failure_site> sites, failure_parse& parsed,
                    std::size_t ahead = 0) const;
  void keep(failure_line failure, request about);
  void add_call(request about, call_outcome outcome, std::uint32_t value,
                std::vector<std::uint8_t> reply, std::uint64_t line);
  void take_access(request about, access_result& result);
  bool take_step_failure(request about, const access_result& access);
  // The texts of the next `count` lines, as many as there are.
  std::vector<std::string_view> block(std::size_t count) const;
  std::optional<bool> request_then_banner(request about, access_result& access);
  void skip_block(std::uint64_t first, const std::string& what, const std::string& why);

  bool read_stats();
  bool read_states(std::size_t first_row);
  bool read_assets();
  bool parse_state(const layouts::harvest_request& entry, std::vector<std::uint8_t>& record,
                   std::string& why);

  // profile_step.cpp
  bool read_profile();
  bool take_records(std::size_t most, std::vector<std::uint8_t>& reply);
  bool events_failure_ahead() const;
  void read_profiler();
  void split_by_sequence(std::size_t first_call);

  // hid_step.cpp
  bool read_hid(std::size_t first_row);

  // capture_reader.cpp: after the grammar.
  void check_profile_lines();

  std::vector<capture_line> lines_;
  std::vector<capture_record> records_;
  capture_model& model_;
  damage_log& damage_;
  year_preference years_;
  const zone_rules& zone_;
  bool cut_short_;
  harvest_model* harvest_ = nullptr;
  std::size_t at_ = 0;
  bool hex_numbers_ = false;
  bool base_open_ = false;  // the next failure line may set the base anew
  std::optional<std::size_t> jump_;
  // Records kept, in capture order, with the line each came from.
  std::vector<const capture_record*> kept_records_;
};

}  // namespace inspect
