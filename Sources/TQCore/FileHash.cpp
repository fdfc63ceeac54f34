#include "TQCore/FileHash.hpp"

#include <stdexcept>

#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Digest.hpp"
#include "TQPlatform/FileSystem/Files.hpp"

namespace tq {

std::string FileHash::sha256Hex(const std::filesystem::path& url, std::size_t chunkSize, std::stop_token stop) {
  if (chunkSize == 0) throw std::invalid_argument("FileHash: a chunk holds at least one byte");
  FileReader file(url);
  Bytes chunk(chunkSize);
  SHA256 hash;
  while (const std::size_t count = file.read(chunk)) {
    throwIfStopped(stop);
    hash.update(ByteView(chunk).first(count));
  }
  return hash.finishHex();
}

}  // namespace tq
