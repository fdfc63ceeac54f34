#include "TQVision/VisionProvider.hpp"

namespace tq {

const std::vector<ExtractedFrame>& framesOf(const Shared<std::vector<ExtractedFrame>>& frames) {
  static const std::vector<ExtractedFrame> none;
  return frames ? *frames : none;
}

}  // namespace tq
