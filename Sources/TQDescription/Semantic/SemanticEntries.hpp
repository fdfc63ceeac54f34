#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tq {

/// What a `SemanticIndex` knows of its clips: a table with all vectors in one stretch of memory, so that a comparison
/// with each of them runs at the speed of memory.
class SemanticEntries {
 public:
  struct Clip {
    std::string filename;
    std::string contentHash;
    std::size_t start;   ///< of its vector within all numbers
    std::size_t length;  ///< of its vector
    double norm;         ///< of its vector
  };

  /// Makes room for that many numbers in all.
  void reserve(std::size_t numbers) { numbers_.reserve(numbers); }

  void add(std::string filename, std::string contentHash, std::span<const float> vector);

  /// Adds all of another table's behind its own.
  void append(SemanticEntries other);

  /// To be called once all are added: brings clips and vectors into the order of the filenames. Of equal ones the entry
  /// that was added last stays.
  void sort();

  /// In the order of the filenames.
  const std::vector<Clip>& clips() const { return clips_; }

  std::span<const float> vectorOf(const Clip& clip) const {
    return std::span(numbers_).subspan(clip.start, clip.length);
  }

  /// Of all vectors.
  std::size_t numberCount() const { return numbers_.size(); }

  /// A null pointer when there is none.
  const Clip* find(std::string_view filename) const;

 private:
  std::vector<Clip> clips_;
  std::vector<float> numbers_;
};

}  // namespace tq
