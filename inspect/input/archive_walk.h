#pragma once

// The members of a collection archive one after another, as a stream
// through libarchive: a .tar (plain, gzip, xz, bzip2 or zstd) or a .zip.
// Nothing is written anywhere and no link is followed; each member's bytes
// are read under a size cap and a compression-ratio check, so that a bomb
// costs bounded time and memory. What is passed over for what it is, and
// the damage that ends the walk, are kept as typed rows.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/input/input_file.h"

struct archive;

namespace inspect {

struct archive_limits {
  std::uint64_t max_capture_size = std::uint64_t{256} << 20;  // a capture member's bytes
  std::uint64_t bomb_ratio = 200;                 // bytes out per compressed byte in
  std::uint64_t bomb_floor = std::uint64_t{4} << 20;  // a member smaller is no bomb
};

// Whether an input's first raw bytes open an archive: zip's or tar's
// signature, a tar inside gzip, or xz, bzip2 or zstd (whose lone file is
// read as a member with no name).
bool archive_magic(std::string_view start);

enum class member_problem_kind {
  link,         // symbolic or hard link: not followed
  device,       // device, pipe or socket: not opened
  unsafe_name,  // absolute or through "..": passed over
  encrypted,
  unreadable,   // libarchive cannot read this member (method, header)
  too_large,    // a capture over the cap
  bomb,         // compression ratio past the check
  damaged,      // the archive itself: the walk ends here
};

struct member_problem {
  member_problem_kind kind;
  std::string member;  // as stored (any bytes); empty when no member places it
  std::string after;   // for damage between members: the last member read
  std::uint64_t amount = 0;  // too_large: the size; bomb: bytes out
  std::uint64_t limit = 0;   // too_large: the cap; bomb: compressed bytes in
  std::string detail;        // libarchive's words, for unreadable and damaged
};

// The problem in words, lower case, for a fault line or a table row.
std::string problem_text(const member_problem& problem);
// Something the archive held was lost (a link or device is passed over on purpose).
bool problem_lost(member_problem_kind kind);

struct member_entry {
  std::string name;        // empty for the lone file of a compressed stream
  std::uint64_t ordinal = 0;  // among the archive's headers, from 0
  std::optional<std::uint64_t> size;  // as its header says
};

class archive_walk {
 public:
  // `file` (an archive by archive_magic) outlives the walk, which reads it.
  archive_walk(input_file& file, const archive_limits& limits);
  ~archive_walk();
  archive_walk(const archive_walk&) = delete;
  archive_walk& operator=(const archive_walk&) = delete;

  // The next regular member, the rest of the one before passed over.
  // False at the end, or when the archive cannot be read further.
  bool next(member_entry& entry);

  // The member is a capture: the size cap holds for it. False when its header already passes
  // the cap (refused).
  bool take_as_capture();
  // The current member's bytes; false with `fault` on damage or refusal.
  bool read(std::span<char> out, std::size_t& got, std::string& fault);
  // `out` bytes made from the member so far (inflated from a .gz member,
  // say) within the cap and the ratio check; false, refused, with `fault`.
  bool within_limits(std::uint64_t out, std::string& fault);
  // The current capture was refused (cap or bomb), not merely damaged.
  bool refused() const { return refused_; }

  // Compressed bytes read so far, for progress.
  std::uint64_t consumed() const;

  // What was passed over or went wrong so far; finished with the walk.
  const std::vector<member_problem>& problems() const { return problems_; }
  bool lost() const;

 private:
  void settle();
  void add(member_problem_kind kind, std::string detail = {}, std::uint64_t amount = 0,
           std::uint64_t limit = 0);
  bool stop(int status);

  archive_limits limits_;
  ::archive* archive_ = nullptr;
  bool stopped_ = false;
  std::uint64_t ordinal_ = 0;
  bool open_member_ = false;
  member_entry current_;
  bool capture_ = false;
  bool refused_ = false;
  bool data_ended_ = false;
  std::optional<member_problem> member_fault_;  // settled when the walk moves on
  std::uint64_t out_ = 0;                       // bytes of the current member
  std::int64_t in_at_start_ = 0;                // compressed bytes before it
  std::string last_name_;
  std::vector<member_problem> problems_;
  std::unique_ptr<char[]> buffer_;
};

}  // namespace inspect
