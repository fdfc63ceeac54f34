#pragma once

#include <memory>
#include <utility>

namespace tq {

/// An optional, immutable value that copies share. It compares by content, so a record that holds it stays a plain
/// value, and copying that record costs a reference count whatever the size of the value.
template <class T>
class Shared {
 public:
  Shared() = default;
  Shared(T value) : value_(std::make_shared<const T>(std::move(value))) {}

  bool has_value() const { return value_ != nullptr; }
  explicit operator bool() const { return has_value(); }
  const T& operator*() const { return *value_; }
  const T* operator->() const { return value_.get(); }

  bool operator==(const Shared& other) const {
    return value_ == other.value_ || (value_ && other.value_ && *value_ == *other.value_);
  }

 private:
  std::shared_ptr<const T> value_;
};

}  // namespace tq
