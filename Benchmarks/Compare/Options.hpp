#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tq::compare {

struct Options {
  std::filesystem::path clips;  ///< the folder that make-clips filled
  int rounds = 5;
  bool quick = false;  ///< one round, and no full decodes
  std::string only;    ///< a word in the subject of what is to be measured; empty for all

  /// Throws `std::invalid_argument` with the usage.
  static Options parse(const std::vector<std::string>& arguments);
};

}  // namespace tq::compare
