#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "TQCore/Models/ExtractedFrame.hpp"
#include "TQCore/Shared.hpp"

namespace tq {

/// The frames that the window shows at the moment, where the threads that decode pictures find them. Operations may be
/// called on any thread.
class FrameShelf {
 public:
  using Frames = Shared<std::vector<ExtractedFrame>>;

  /// Puts these frames in the place of the former ones, and gives the number by which they are asked for.
  std::uint64_t put(Frames frames);

  /// The frames of that number; absent once others lie here.
  Frames find(std::uint64_t number) const;

 private:
  mutable std::mutex mutex_;
  Frames frames_;
  std::uint64_t number_ = 0;
};

}  // namespace tq
