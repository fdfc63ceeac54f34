#include "TQPlatform/Digest.hpp"

#include <array>
#include <openssl/evp.h>
#include <stdexcept>

namespace tq {

struct SHA256::State {
  EVP_MD_CTX* context = EVP_MD_CTX_new();
  ~State() { EVP_MD_CTX_free(context); }
};

namespace {

/// OpenSSL reports failure as any result but 1; it happens only when memory or the library's configuration gives out.
void check(int result) {
  if (result != 1) throw std::runtime_error("SHA-256 is not available");
}

}  // namespace

SHA256::SHA256() : state_(std::make_unique<State>()) {
  check(state_->context ? EVP_DigestInit_ex(state_->context, EVP_sha256(), nullptr) : 0);
}

SHA256::~SHA256() = default;

void SHA256::update(ByteView bytes) {
  check(EVP_DigestUpdate(state_->context, bytes.data(), bytes.size()));
}

std::string SHA256::finishHex() {
  std::array<std::uint8_t, EVP_MAX_MD_SIZE> digest{};
  unsigned length = 0;
  check(EVP_DigestFinal_ex(state_->context, digest.data(), &length));
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * length);
  for (const std::uint8_t byte : ByteView(digest).first(length)) {
    text += digits[byte >> 4];
    text += digits[byte & 0x0F];
  }
  return text;
}

}  // namespace tq
