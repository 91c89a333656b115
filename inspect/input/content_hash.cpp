#include "inspect/input/content_hash.h"

#include <nettle/sha2.h>

#include <array>

namespace inspect {

// Nettle rather than a larger library: every run of kelvra-inspect would
// pay for loading it.
struct content_hash::state {
  sha256_ctx context{};
  bool open = true;
};

content_hash::content_hash() : state_(std::make_unique<state>()) { sha256_init(&state_->context); }
content_hash::~content_hash() = default;

void content_hash::add(const char* bytes, std::size_t size) {
  if (state_->open && size != 0)
    sha256_update(&state_->context, size, reinterpret_cast<const std::uint8_t*>(bytes));
}

std::string content_hash::hex() {
  if (!state_->open) return {};
  state_->open = false;
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
  sha256_digest(&state_->context, digest.size(), digest.data());
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : digest) {
    text += digits[byte >> 4];
    text += digits[byte & 0xf];
  }
  return text;
}

namespace {

class hashing_source final : public byte_source {
 public:
  hashing_source(std::unique_ptr<byte_source> inner, content_hash& hash)
      : inner_(std::move(inner)), hash_(hash) {}

  bool read(std::span<char> out, std::size_t& got, std::string& fault) override {
    const bool ok = inner_->read(out, got, fault);
    if (ok) hash_.add(out.data(), got);
    return ok;
  }
  std::uint64_t consumed() const override { return inner_->consumed(); }
  std::uint64_t size() const override { return inner_->size(); }

 private:
  std::unique_ptr<byte_source> inner_;
  content_hash& hash_;
};

}  // namespace

std::unique_ptr<byte_source> hashing(std::unique_ptr<byte_source> source, content_hash& hash) {
  return std::make_unique<hashing_source>(std::move(source), hash);
}

}  // namespace inspect
