#include "TQDescription/Search/FilenameIndex.hpp"

namespace tq {

void FilenameIndex::add(std::string_view filename) {
  const Number number = names_.add(filename);
  if (number == firstRecords_.size()) firstRecords_.push_back(static_cast<std::uint32_t>(ofRecord_.size()));
  ofRecord_.push_back(number);
}

void FilenameIndex::finish() {
  const std::vector<Number> order = names_.inOrderOfBytes();
  ranks_.resize(order.size());
  for (std::uint32_t rank = 0; rank < order.size(); ++rank)
    ranks_[order[rank]] = rank;
}

}  // namespace tq
