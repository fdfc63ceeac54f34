#pragma once

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace tq::compare {

/// Draws that a seed decides, the same on every machine.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  std::size_t below(std::size_t count) { return engine_() % count; }
  std::size_t between(std::size_t least, std::size_t most) { return least + below(most - least + 1); }
  bool chance(std::size_t oneIn) { return below(oneIn) == 0; }

  /// From 0 up to, but not including, 1.
  double unit() { return static_cast<double>(engine_() >> 11) * 0x1p-53; }

 private:
  std::mt19937_64 engine_;
};

/// Texts in the order of how often they are used: by Zipf's law, the one at place n about 1/n as often as the first.
class RankedTexts {
 public:
  RankedTexts() = default;
  explicit RankedTexts(std::vector<std::string> texts);

  std::size_t size() const { return texts_.size(); }
  const std::string& at(std::size_t place) const { return texts_[place]; }
  const std::string& any(Random& random) const;

 private:
  std::vector<std::string> texts_;
  std::vector<double> sums_;  ///< of the frequencies up to and including each text
};

/// The words of the descriptions: those that hold English sentences together, and words that mean something.
struct Vocabulary {
  /// Takes `size` words that mean something from a dictionary with one word a line, shorter ones rather for the
  /// frequent ones. Throws `std::runtime_error` when it has too few.
  Vocabulary(const std::filesystem::path& dictionary, std::size_t size, Random random);

  /// `words` of them, as in a sentence.
  std::string sentence(std::size_t words, Random& random) const;

  /// `count` texts of one or two words that mean something.
  RankedTexts phrases(std::size_t count, Random& random) const;

  RankedTexts words;
};

}  // namespace tq::compare
