#pragma once

// The captures one input holds: a bare file is one capture (whatever it
// turns out to be); an archive's are the members whose first bytes a form's
// probe knows, a .gz member inflated first. Members that are no capture are
// passed over and counted; what the walk refused or met is kept as rows.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "inspect/input/archive_walk.h"
#include "inspect/input/byte_source.h"
#include "inspect/input/input_damage.h"
#include "inspect/input/input_forms.h"

namespace inspect {

struct found_capture {
  std::optional<std::string> member;  // as stored; none for a bare file
  std::uint64_t ordinal = 0;          // of its member among the archive's headers
  std::string label;                  // for messages: "FILE" or "FILE: MEMBER"
  std::unique_ptr<byte_source> source;  // its own bytes; valid until the next call
};

// "FILE: MEMBER", the name a member goes by in messages and models.
std::string member_label(const std::string& file, const std::string& member);

// Which member to take, whatever its probe says: by name or by place.
struct member_choice {
  std::optional<std::string> name;
  std::optional<std::uint64_t> ordinal;
  bool any() const { return name || ordinal; }
};

class input_captures {
 public:
  // `forms`: what counts as a capture inside an archive.
  input_captures(std::string path, const archive_limits& limits, std::span<const input_form> forms);
  ~input_captures();
  input_captures(const input_captures&) = delete;
  input_captures& operator=(const input_captures&) = delete;

  // False, with `fault`, when the input cannot be opened at all.
  bool open(input_fault& fault);
  bool archive() const { return walk_ != nullptr; }
  // An archive on a pipe cannot be walked twice.
  bool seekable() const;

  void choose(member_choice choice) { choice_ = std::move(choice); }
  // The next capture; false at the end.
  bool next(found_capture& capture);

  // The capture just read was refused by the walk (cap or bomb), not read.
  bool refused() const { return walk_ != nullptr && walk_->refused(); }
  // Regular members that hold no capture.
  std::uint64_t passed_over() const { return passed_over_; }
  // What the walk passed over for what it is, or met; complete at the end.
  std::span<const member_problem> problems() const;
  bool lost() const { return walk_ != nullptr && walk_->lost(); }

 private:
  std::string path_;
  archive_limits limits_;
  std::vector<input_form> forms_;
  member_choice choice_;
  std::unique_ptr<input_file> file_;
  std::unique_ptr<archive_walk> walk_;
  bool bare_taken_ = false;
  std::uint64_t passed_over_ = 0;
};

}  // namespace inspect
