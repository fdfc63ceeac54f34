#pragma once

#include <cstdint>

#include "Benchmarks/Library/Vocabulary.hpp"
#include "TQCore/Models/DescriptionResult.hpp"

namespace tq::compare {

/// Makes descriptions as a model gives them for clips of an archive: about 10 KB of JSON each, with shots, people,
/// tags, places and for every second one a transcript.
class SampleClips {
 public:
  SampleClips(const std::filesystem::path& dictionary, std::uint64_t seed);

  /// Always the same one for the same seed and number. Any number of threads may ask.
  DescriptionResult clip(std::size_t number) const;

  /// `count` different queries of three words each: a frequent one, one as often as in a description and a rare one. In
  /// every third query one of them has a typing error, in every fifth one is not typed to its end.
  std::vector<std::string> queries(std::size_t count) const;

 private:
  std::uint64_t seed_;
  Vocabulary vocabulary_;
  RankedTexts themes_, keywords_, subjects_, useCases_, environments_, weathers_, moods_, tags_, places_;
};

}  // namespace tq::compare
