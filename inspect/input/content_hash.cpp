#include "inspect/input/content_hash.h"

#include <openssl/evp.h>

#include <array>

namespace inspect {

struct content_hash::state {
  EVP_MD_CTX* context = EVP_MD_CTX_new();
  bool ok = context != nullptr && EVP_DigestInit_ex(context, EVP_sha256(), nullptr) == 1;
  ~state() { EVP_MD_CTX_free(context); }
};

content_hash::content_hash() : state_(std::make_unique<state>()) {}
content_hash::~content_hash() = default;

void content_hash::add(const char* bytes, std::size_t size) {
  if (state_->ok && size != 0) state_->ok = EVP_DigestUpdate(state_->context, bytes, size) == 1;
}

std::string content_hash::hex() {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  if (!state_->ok || EVP_DigestFinal_ex(state_->context, digest.data(), &size) != 1) return {};
  state_->ok = false;
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (unsigned int i = 0; i < size; ++i) {
    text += digits[digest[i] >> 4];
    text += digits[digest[i] & 0xf];
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
