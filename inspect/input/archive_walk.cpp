#include "inspect/input/archive_walk.h"

#include <archive.h>
#include <archive_entry.h>
#include <zlib.h>

#include <algorithm>
#include <array>

namespace inspect {
namespace {

constexpr std::size_t block_size = 64 * 1024;
constexpr std::size_t tar_magic_at = 257;

bool tar_magic(std::string_view bytes) {
  return bytes.size() >= tar_magic_at + 5 && bytes.substr(tar_magic_at, 5) == "ustar";
}

// The first bytes gzip inflates to, as far as `start` reaches.
std::string inflated_start(std::string_view start) {
  std::string out(tar_magic_at + 8, '\0');
  z_stream z{};
  if (inflateInit2(&z, 15 + 16) != Z_OK) return {};
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(start.data()));
  z.avail_in = static_cast<uInt>(start.size());
  z.next_out = reinterpret_cast<Bytef*>(out.data());
  z.avail_out = static_cast<uInt>(out.size());
  inflate(&z, Z_SYNC_FLUSH);
  out.resize(out.size() - z.avail_out);
  inflateEnd(&z);
  return out;
}

// Signatures of the compressions whose lone file libarchive reads too.
constexpr std::array<std::string_view, 3> stream_signatures = {
    std::string_view("\xfd" "7zXZ\0", 6), "BZh", "\x28\xb5\x2f\xfd"};

bool stream_signature(std::string_view start) {
  if (start.starts_with("BZh"))  // and the block size, 1 to 9
    return start.size() > 3 && start[3] >= '1' && start[3] <= '9';
  return std::any_of(stream_signatures.begin(), stream_signatures.end(),
                     [&](std::string_view s) { return start.starts_with(s); });
}

bool unsafe(std::string_view name) {
  if (name.starts_with('/') || name.starts_with('\\') ||
      (name.size() >= 2 && name[1] == ':'))  // a drive letter
    return true;
  while (!name.empty()) {
    const std::size_t end = name.find_first_of("/\\");
    if (name.substr(0, end) == "..") return true;
    if (end == std::string_view::npos) break;
    name.remove_prefix(end + 1);
  }
  return false;
}

la_ssize_t read_pipe(::archive*, void* data, const void** block) {
  auto* file = static_cast<input_file*>(data);
  thread_local std::array<char, block_size> buffer;
  std::size_t got = 0;
  std::string fault;
  if (!file->read_raw(buffer, got, fault)) return -1;
  *block = buffer.data();
  return static_cast<la_ssize_t>(got);
}

}  // namespace

bool archive_magic(std::string_view start) {
  if (start.starts_with("PK\x03\x04") || start.starts_with("PK\x05\x06") || tar_magic(start))
    return true;
  if (start.starts_with("\x1f\x8b")) return tar_magic(inflated_start(start));
  return stream_signature(start);
}

std::string problem_text(const member_problem& p) {
  switch (p.kind) {
    case member_problem_kind::link: return "a link: not followed";
    case member_problem_kind::device: return "a device, pipe or socket: not opened";
    case member_problem_kind::unsafe_name: return "an absolute or \"..\" name: passed over";
    case member_problem_kind::encrypted: return "encrypted: passed over";
    case member_problem_kind::unreadable: return "cannot be read: " + p.detail + "; passed over";
    case member_problem_kind::too_large:
      return "a capture of " + std::to_string(p.amount) + " bytes, over --max-capture-size " +
             std::to_string(p.limit) + ": refused";
    case member_problem_kind::bomb:
      return "a decompression bomb: " + std::to_string(p.amount) + " bytes out of " +
             std::to_string(p.limit) + ": refused" + (p.detail.empty() ? "" : "; " + p.detail);
    case member_problem_kind::damaged:
      return "the archive is damaged: " + p.detail + "; the rest of it is not read";
  }
  return {};
}

bool problem_lost(member_problem_kind kind) {
  return kind != member_problem_kind::link && kind != member_problem_kind::device &&
         kind != member_problem_kind::unsafe_name;
}

archive_walk::archive_walk(input_file& file, const archive_limits& limits)
    : limits_(limits), buffer_(new char[block_size]) {
  archive_ = archive_read_new();
  if (archive_ == nullptr) {
    stopped_ = true;
    add(member_problem_kind::damaged, "out of memory");
    return;
  }
  // Only the compressions libarchive does itself: it would run an outside
  // program for some others.
  archive_read_support_filter_gzip(archive_);
  archive_read_support_filter_xz(archive_);
  archive_read_support_filter_bzip2(archive_);
  archive_read_support_filter_zstd(archive_);
  archive_read_support_format_tar(archive_);
  archive_read_support_format_zip(archive_);
  if (!file.start().starts_with("\x1f\x8b")) archive_read_support_format_raw(archive_);
  file.rewind();
  const int status = file.seekable()
                         ? archive_read_open_fd(archive_, file.descriptor(), block_size)
                         : archive_read_open(archive_, &file, nullptr, read_pipe, nullptr);
  if (status != ARCHIVE_OK) stop(status);
}

archive_walk::~archive_walk() {
  if (archive_ != nullptr) archive_read_free(archive_);
}

bool archive_walk::lost() const {
  return std::any_of(problems_.begin(), problems_.end(),
                     [](const member_problem& p) { return problem_lost(p.kind); });
}

void archive_walk::add(member_problem_kind kind, std::string detail, std::uint64_t amount,
                       std::uint64_t limit) {
  member_problem problem{kind, open_member_ ? current_.name : std::string(),
                         open_member_ ? std::string() : last_name_, amount, limit, std::move(detail)};
  if (open_member_ && !member_fault_)
    member_fault_ = std::move(problem);
  else if (!open_member_)
    problems_.push_back(std::move(problem));
}

// The archive cannot be read on: said once, as damage of the member being
// read or between members.
bool archive_walk::stop(int) {
  if (!stopped_) {
    const char* words = archive_ != nullptr ? archive_error_string(archive_) : nullptr;
    add(member_problem_kind::damaged, words != nullptr ? words : "cannot be read");
  }
  stopped_ = true;
  return false;
}

// The member left: its problem kept.
void archive_walk::settle() {
  if (!open_member_) return;
  if (member_fault_) problems_.push_back(std::move(*member_fault_));
  member_fault_.reset();
  last_name_ = current_.name;
  open_member_ = false;
}

bool archive_walk::next(member_entry& entry) {
  while (!stopped_) {
    // The rest of the member before: skipped where libarchive need not
    // inflate it, read through under the ratio check where it must.
    if (open_member_ && !data_ended_) {
      if (archive_filter_code(archive_, 0) == ARCHIVE_FILTER_NONE ||
          archive_format(archive_) == ARCHIVE_FORMAT_ZIP) {
        if (archive_read_data_skip(archive_) == ARCHIVE_FATAL) stop(ARCHIVE_FATAL);
      } else {
        std::size_t got = 0;
        std::string fault;
        while (read({buffer_.get(), block_size}, got, fault) && got != 0) {
        }
      }
    }
    settle();
    if (stopped_) return false;
    archive_entry* header = nullptr;
    int status = archive_read_next_header(archive_, &header);
    if (status == ARCHIVE_EOF) {
      stopped_ = true;
      return false;
    }
    if (status == ARCHIVE_FATAL || header == nullptr) return stop(status);
    const char* name = archive_entry_pathname_utf8(header);
    if (name == nullptr) name = archive_entry_pathname(header);
    current_ = {name != nullptr ? name : "", ordinal_++, std::nullopt};
    if (archive_format(archive_) == ARCHIVE_FORMAT_RAW) current_.name.clear();
    if (archive_entry_size_is_set(header) && archive_entry_size(header) >= 0)
      current_.size = static_cast<std::uint64_t>(archive_entry_size(header));
    open_member_ = true;
    capture_ = refused_ = data_ended_ = false;
    out_ = 0;
    in_at_start_ = archive_filter_bytes(archive_, -1);
    const auto type = archive_entry_filetype(header);
    if (status == ARCHIVE_FAILED) {
      const char* words = archive_error_string(archive_);
      add(member_problem_kind::unreadable, words != nullptr ? words : "a bad header");
    } else if (archive_entry_hardlink(header) != nullptr || type == AE_IFLNK) {
      add(member_problem_kind::link);
    } else if (type == AE_IFDIR) {
    } else if (type != AE_IFREG && type != 0) {
      add(member_problem_kind::device);
    } else if (current_.name.empty() && archive_format(archive_) != ARCHIVE_FORMAT_RAW) {
      add(member_problem_kind::unsafe_name);
    } else if (unsafe(current_.name)) {
      add(member_problem_kind::unsafe_name);
    } else if (archive_entry_is_data_encrypted(header) || archive_entry_is_metadata_encrypted(header)) {
      add(member_problem_kind::encrypted);
    } else {
      entry = current_;
      return true;
    }
    // Passed over: its bytes are not this walk's to read.
    if (archive_read_data_skip(archive_) == ARCHIVE_FATAL) stop(ARCHIVE_FATAL);
    data_ended_ = true;
  }
  settle();
  return false;
}

std::uint64_t archive_walk::consumed() const {
  return archive_ != nullptr ? static_cast<std::uint64_t>(std::max<std::int64_t>(0, archive_filter_bytes(archive_, -1)))
                             : 0;
}

bool archive_walk::take_as_capture() {
  capture_ = true;
  if (current_.size && *current_.size > limits_.max_capture_size) {
    refused_ = true;
    add(member_problem_kind::too_large, {}, *current_.size, limits_.max_capture_size);
    return false;
  }
  return true;
}

bool archive_walk::read(std::span<char> out, std::size_t& got, std::string& fault) {
  got = 0;
  if (member_fault_) {
    fault = problem_text(*member_fault_);
    return false;
  }
  if (stopped_ || !open_member_ || data_ended_ || out.empty()) return true;
  la_ssize_t count = 0;
  do {
    count = archive_read_data(archive_, out.data(), out.size());
  } while (count == ARCHIVE_RETRY);
  if (count == 0) {
    data_ended_ = true;
    return true;
  }
  if (count < 0) {
    data_ended_ = true;
    if (count == ARCHIVE_FATAL) {
      stop(ARCHIVE_FATAL);
    } else {
      const char* words = archive_error_string(archive_);
      add(member_problem_kind::unreadable, words != nullptr ? words : "bad data");
    }
    fault = problem_text(*member_fault_);
    return false;
  }
  out_ += static_cast<std::uint64_t>(count);
  if (!within_limits(out_, fault)) return false;
  got = static_cast<std::size_t>(count);
  return true;
}

bool archive_walk::within_limits(std::uint64_t out, std::string& fault) {
  if (member_fault_) {
    fault = problem_text(*member_fault_);
    return false;
  }
  const auto in = static_cast<std::uint64_t>(
      std::max<std::int64_t>(1, archive_filter_bytes(archive_, -1) - in_at_start_));
  if (capture_ && out > limits_.max_capture_size) {
    add(member_problem_kind::too_large, {}, out, limits_.max_capture_size);
  } else if (out > limits_.bomb_floor && out / in > limits_.bomb_ratio) {
    // A stream goes on only past the bomb's bytes: the walk ends here.
    const bool ends = archive_format(archive_) != ARCHIVE_FORMAT_ZIP;
    add(member_problem_kind::bomb, ends ? "the rest of the archive is not read" : "", out, in);
    stopped_ = stopped_ || ends;
  } else {
    return true;
  }
  refused_ = capture_;
  data_ended_ = true;
  fault = problem_text(*member_fault_);
  return false;
}

}  // namespace inspect
