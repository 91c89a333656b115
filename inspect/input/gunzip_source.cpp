#include "inspect/input/gunzip_source.h"

#include <zlib.h>

#include <algorithm>
#include <climits>

namespace inspect {

bool gzip_magic(std::string_view start) { return start.starts_with("\x1f\x8b"); }

namespace {

class gunzip_source final : public byte_source {
 public:
  explicit gunzip_source(std::unique_ptr<byte_source> in) : in_(std::move(in)) {
    ok_ = inflateInit2(&z_, 15 + 16) == Z_OK;
  }
  ~gunzip_source() override {
    if (ok_) inflateEnd(&z_);
  }
  gunzip_source(const gunzip_source&) = delete;
  gunzip_source& operator=(const gunzip_source&) = delete;

  bool read(std::span<char> out, std::size_t& got, std::string& fault) override {
    got = 0;
    if (!ok_) {
      fault = "out of memory";
      return false;
    }
    while (got == 0 && !out.empty() && !ended_) {
      if (z_.avail_in == 0 && !fill(fault)) return false;
      if (z_.avail_in == 0) {
        // The input ends: whole only between members.
        if (in_member_) {
          fault = "corrupt gzip data: unexpected end of file";
          return false;
        }
        ended_ = true;
        break;
      }
      if (!in_member_) {
        // Another member follows, or bytes that are none: let them be.
        if (z_.avail_in < 2 && !more_input(fault)) return false;
        if (!gzip_magic({reinterpret_cast<const char*>(z_.next_in), z_.avail_in})) {
          ended_ = true;
          break;
        }
        inflateReset(&z_);
        in_member_ = true;
      }
      z_.next_out = reinterpret_cast<Bytef*>(out.data());
      z_.avail_out = static_cast<uInt>(std::min<std::size_t>(out.size(), UINT_MAX));
      const int status = inflate(&z_, Z_NO_FLUSH);
      got = out.size() - z_.avail_out;
      if (status == Z_STREAM_END) {
        in_member_ = false;
      } else if (status == Z_MEM_ERROR) {
        fault = "out of memory";
        return false;
      } else if (status != Z_OK && status != Z_BUF_ERROR) {
        fault = std::string("corrupt gzip data: ") + (z_.msg != nullptr ? z_.msg : "bad data");
        return false;
      }
    }
    return true;
  }

  std::uint64_t consumed() const override { return in_->consumed(); }
  std::uint64_t size() const override { return in_->size(); }

 private:
  // Refills the input when it is used up; avail_in 0 after: the end.
  bool fill(std::string& fault) {
    std::size_t count = 0;
    if (!in_->read(buffer_, count, fault)) return false;
    z_.next_in = reinterpret_cast<Bytef*>(buffer_);
    z_.avail_in = static_cast<uInt>(count);
    return true;
  }
  // The unread input moved to the front and more read behind it, so that
  // a member's two-byte magic is never split.
  bool more_input(std::string& fault) {
    const std::size_t kept = z_.avail_in;
    std::copy_n(z_.next_in, kept, reinterpret_cast<Bytef*>(buffer_));
    std::size_t count = 0;
    if (!in_->read(std::span(buffer_ + kept, sizeof buffer_ - kept), count, fault)) return false;
    z_.next_in = reinterpret_cast<Bytef*>(buffer_);
    z_.avail_in = static_cast<uInt>(kept + count);
    return true;
  }

  std::unique_ptr<byte_source> in_;
  z_stream z_{};
  bool ok_ = false;
  bool in_member_ = false;
  bool ended_ = false;
  char buffer_[64 * 1024];
};

}  // namespace

std::unique_ptr<byte_source> gunzip(std::unique_ptr<byte_source> compressed) {
  return std::make_unique<gunzip_source>(std::move(compressed));
}

}  // namespace inspect
