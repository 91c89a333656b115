#include "inspect/input/input_captures.h"

#include <algorithm>

#include "inspect/input/gunzip_source.h"

namespace inspect {
namespace {

// The current member's bytes as the walk gives them.
class member_source final : public byte_source {
 public:
  explicit member_source(archive_walk& walk, std::uint64_t size) : walk_(walk), size_(size) {}
  bool read(std::span<char> out, std::size_t& got, std::string& fault) override {
    return walk_.read(out, got, fault);
  }
  std::uint64_t consumed() const override { return walk_.consumed(); }
  std::uint64_t size() const override { return size_; }

 private:
  archive_walk& walk_;
  std::uint64_t size_;
};

// A .gz member's inflated bytes under the walk's cap and ratio check.
class inflated_source final : public byte_source {
 public:
  inflated_source(archive_walk& walk, std::unique_ptr<byte_source> inner)
      : walk_(walk), inner_(std::move(inner)) {}
  bool read(std::span<char> out, std::size_t& got, std::string& fault) override {
    if (!inner_->read(out, got, fault)) return false;
    made_ += got;
    if (walk_.within_limits(made_, fault)) return true;
    got = 0;
    return false;
  }
  std::uint64_t consumed() const override { return inner_->consumed(); }
  std::uint64_t size() const override { return inner_->size(); }

 private:
  archive_walk& walk_;
  std::unique_ptr<byte_source> inner_;
  std::uint64_t made_ = 0;
};

// Up to `size` bytes from the start of `source`; stops early at its end or
// on a fault, which the replay meets again when it reads on.
std::string read_start(byte_source& source, std::size_t size) {
  std::string start(size, '\0');
  std::size_t have = 0, got = 0;
  std::string fault;
  while (have < size && source.read(std::span(start.data() + have, size - have), got, fault) &&
         got != 0)
    have += got;
  start.resize(have);
  return start;
}

}  // namespace

std::string member_label(const std::string& file, const std::string& member) {
  return input_label(file) + ": " + member;
}

input_captures::input_captures(std::string path, const archive_limits& limits,
                               std::span<const input_form> forms)
    : path_(std::move(path)), limits_(limits), forms_(forms.begin(), forms.end()) {}

input_captures::~input_captures() = default;

bool input_captures::open(input_fault& fault) {
  file_ = input_file::open(path_, fault);
  if (!file_) return false;
  if (archive_magic(file_->start())) walk_ = std::make_unique<archive_walk>(*file_, limits_);
  return true;
}

bool input_captures::seekable() const { return file_ && file_->seekable(); }

std::span<const member_problem> input_captures::problems() const {
  if (!walk_) return {};
  return walk_->problems();
}

bool input_captures::next(found_capture& capture) {
  capture = {};
  if (!walk_) {
    if (bare_taken_ || !file_) return false;
    bare_taken_ = true;
    capture.label = path_;
    capture.source = input_file::as_capture(std::move(file_));
    return capture.source != nullptr;
  }
  member_entry entry;
  while (walk_->next(entry)) {
    if (choice_.any() && !(choice_.name && *choice_.name == entry.name) &&
        !(choice_.ordinal && *choice_.ordinal == entry.ordinal))
      continue;
    std::unique_ptr<byte_source> source =
        std::make_unique<member_source>(*walk_, file_->size());
    // A .gz member is looked at inside.
    std::string first = read_start(*source, 2);
    source = replayed(first, std::move(source));
    if (gzip_magic(first))
      source = std::make_unique<inflated_source>(*walk_, gunzip(std::move(source)));
    std::string start = read_start(*source, detection_size);
    const std::optional<input_form> form = detect_form(start);
    const bool wanted = choice_.any() || (form && std::find(forms_.begin(), forms_.end(), *form) !=
                                                      forms_.end());
    if (!wanted) {
      ++passed_over_;
      continue;
    }
    if (!walk_->take_as_capture()) continue;
    if (!entry.name.empty()) capture.member = entry.name;
    capture.ordinal = entry.ordinal;
    capture.label = capture.member ? member_label(path_, *capture.member) : path_;
    capture.source = replayed(std::move(start), std::move(source));
    return true;
  }
  return false;
}

}  // namespace inspect
