#pragma once

#include <string>

#include "Support/TemporaryFolder.hpp"

namespace tq::test {

/// The text that a file of the folder Golden holds: what an operation has to give, byte for byte.
inline std::string golden(const std::string& name) {
  return contentOf(std::filesystem::path(TQ_GOLDEN_FOLDER) / name);
}

}  // namespace tq::test
