#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "Benchmarks/Shared/Options.hpp"

namespace tq::compare {

/// What every comparison of the library needs.
struct Bench {
  std::ostream& out;  ///< takes the rows
  Options options;
  std::size_t processorCount;
  std::filesystem::path dictionary;  ///< one English word a line

  /// A number of clips, or the tenth part of it for a quick run.
  std::size_t count(std::size_t clips) const { return options.quick ? clips / 10 : clips; }
};

/// A piece of the run that can be asked for by itself.
struct Comparison {
  std::string name;
  void (*run)(const Bench& bench);
};

std::vector<Comparison> allComparisons();

// The rows of each. What they work on is made before the first of them.

void compareLoading(const Bench& bench);
void compareSmallLibrary(const Bench& bench);
void compareLargeLibrary(const Bench& bench);
void compareCosines(const Bench& bench);
void compareCacheFile(const Bench& bench);

}  // namespace tq::compare
