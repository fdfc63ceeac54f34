#pragma once

#include <memory>
#include <string>

#include "TQPlatform/Bytes.hpp"

namespace tq {

/// A running SHA-256 (FIPS 180-4).
class SHA256 {
 public:
  SHA256();
  ~SHA256();
  SHA256(const SHA256&) = delete;
  SHA256& operator=(const SHA256&) = delete;

  void update(ByteView bytes);

  /// The digest of all bytes given so far, as 64 lower-case hexadecimal digits. Call it once, last.
  std::string finishHex();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tq
