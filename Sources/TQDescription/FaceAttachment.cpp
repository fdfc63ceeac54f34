#include "TQDescription/FaceAttachment.hpp"

namespace tq {
namespace {

Shot* shotAt(std::vector<Shot>& shots, std::int64_t index) {
  const bool exists = index >= 0 && static_cast<std::uint64_t>(index) < shots.size();
  return exists ? &shots[static_cast<std::size_t>(index)] : nullptr;
}

}  // namespace

DescriptionResult attachFaces(DescriptionResult to, const std::map<std::int64_t, std::vector<FaceBox>>& faces) {
  for (const auto& [index, boxes] : faces)
    if (Shot* shot = shotAt(to.shots, index)) shot->faces = boxes;
  return to;
}

DescriptionResult attachOnScreenText(DescriptionResult to,
                                     const std::map<std::int64_t, std::vector<std::string>>& ocr) {
  for (const auto& [index, texts] : ocr)
    if (Shot* shot = shotAt(to.shots, index); shot && !texts.empty()) shot->onScreenText = texts;
  return to;
}

}  // namespace tq
