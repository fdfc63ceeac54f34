#include "TQPlatform/Network/Base64.hpp"

#include <algorithm>
#include <openssl/evp.h>

namespace tq {

void appendBase64(std::string& text, ByteView bytes) {
  // A length is an int to the encoder. Between pieces of whole groups of three bytes there is no padding.
  constexpr std::size_t largestPiece = 3 << 20;
  std::size_t end = text.size();
  text.resize(end + base64Length(bytes.size()));
  for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), largestPiece))) {
    const std::size_t piece = std::min(bytes.size(), largestPiece);
    // Each piece is closed with a zero byte: the next piece, or at last the string's own end, stands there.
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()) + end, bytes.data(), static_cast<int>(piece));
    end += base64Length(piece);
  }
}

}  // namespace tq
