#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "TQDescription/Semantic/SemanticEntries.hpp"
#include "TQDescription/Semantic/SemanticIndex.hpp"

namespace tq::compare {

/// `count` vectors of `length` random numbers, as embedding models give them: none above 1, most near 0.
class SampleVectors {
 public:
  SampleVectors(std::size_t count, std::size_t length);

  std::size_t count() const { return count_; }
  std::span<const float> at(std::size_t number) const { return std::span(numbers_).subspan(number * length_, length_); }
  static std::string filename(std::size_t number);

  /// An index that holds them, in this order. Its cache file is written on the way and removed again.
  std::unique_ptr<SemanticIndex> index(const std::filesystem::path& cacheURL) const;

  SemanticEntries entries() const;

  /// A bare loop over all of them, on one thread: the cosines with `query`, whose sums are taken in doubles, eight side
  /// by side.
  std::vector<double> bareCosines(std::span<const float> query) const;

  /// Looks at every number once; what memory alone takes.
  std::uint64_t read() const;

 private:
  std::size_t count_, length_;
  std::vector<float> numbers_;
  std::vector<double> norms_;
};

}  // namespace tq::compare
