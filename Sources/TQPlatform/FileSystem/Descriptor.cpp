#include "TQPlatform/FileSystem/Descriptor.hpp"

#include <unistd.h>

namespace tq {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  if (this != &other) {
    reset();
    value_ = other.release();
  }
  return *this;
}

void Descriptor::reset() noexcept {
  if (value_ >= 0) ::close(release());
}

}  // namespace tq
