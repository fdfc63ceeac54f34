#include "TQDescription/Semantic/SemanticEntries.hpp"

#include <algorithm>
#include <utility>

#include "TQDescription/Semantic/EmbeddingMath.hpp"

namespace tq {

void SemanticEntries::add(std::string filename, std::string contentHash, std::span<const float> vector) {
  clips_.push_back({.filename = std::move(filename),
                    .contentHash = std::move(contentHash),
                    .start = numbers_.size(),
                    .length = vector.size(),
                    .norm = EmbeddingMath::norm(vector)});
  numbers_.insert(numbers_.end(), vector.begin(), vector.end());
}

void SemanticEntries::append(SemanticEntries other) {
  if (clips_.empty()) {
    std::swap(*this, other);
    return;
  }
  for (Clip& clip : other.clips_) {
    clip.start += numbers_.size();
    clips_.push_back(std::move(clip));
  }
  numbers_.insert(numbers_.end(), other.numbers_.begin(), other.numbers_.end());
}

void SemanticEntries::sort() {
  const auto isInOrder = [](const Clip& one, const Clip& next) { return one.filename < next.filename; };
  const auto isOutOfOrder = [&](const Clip& one, const Clip& next) { return !isInOrder(one, next); };
  if (std::adjacent_find(clips_.begin(), clips_.end(), isOutOfOrder) == clips_.end()) return;

  std::stable_sort(clips_.begin(), clips_.end(), isInOrder);
  SemanticEntries sorted;
  sorted.clips_.reserve(clips_.size());
  sorted.reserve(numbers_.size());
  for (std::size_t index = 0; index < clips_.size(); ++index) {
    Clip& clip = clips_[index];
    if (index + 1 < clips_.size() && clips_[index + 1].filename == clip.filename) continue;
    sorted.add(std::move(clip.filename), std::move(clip.contentHash), vectorOf(clip));
  }
  *this = std::move(sorted);
}

const SemanticEntries::Clip* SemanticEntries::find(std::string_view filename) const {
  const auto found = std::lower_bound(clips_.begin(), clips_.end(), filename,
                                      [](const Clip& clip, std::string_view name) { return clip.filename < name; });
  return found != clips_.end() && found->filename == filename ? &*found : nullptr;
}

}  // namespace tq
