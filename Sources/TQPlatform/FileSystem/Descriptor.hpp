#pragma once

#include <utility>

namespace tq {

/// Owns a file descriptor of the system and closes it; -1 is none. For the rooms of TQPlatform, which alone speak
/// POSIX.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor() { reset(); }

  int get() const { return value_; }
  explicit operator bool() const { return value_ >= 0; }

  /// Closes it now; what the system says about it is lost.
  void reset() noexcept;

  /// Gives it away; the caller closes it.
  int release() { return std::exchange(value_, -1); }

 private:
  int value_ = -1;
};

}  // namespace tq
