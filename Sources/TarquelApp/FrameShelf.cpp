#include "TarquelApp/FrameShelf.hpp"

#include <utility>

namespace tq {

std::uint64_t FrameShelf::put(Frames frames) {
  const std::scoped_lock lock(mutex_);
  frames_ = std::move(frames);
  return ++number_;
}

FrameShelf::Frames FrameShelf::find(std::uint64_t number) const {
  const std::scoped_lock lock(mutex_);
  return number == number_ ? frames_ : Frames();
}

}  // namespace tq
