#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tq::compare {

/// What a comparison is told.
struct Options {
  std::filesystem::path folder;  ///< where what is worked on lies
  int rounds = 5;
  bool quick = false;  ///< one round, and less of the work
  std::string only;    ///< a word in the subject of what is to be measured; empty for all

  /// Throws `std::invalid_argument` with the usage.
  static Options parse(const std::string& program, const std::vector<std::string>& arguments);
};

}  // namespace tq::compare
