#pragma once

#include <filesystem>
#include <string_view>

#include "Support/TemporaryFolder.hpp"

namespace tq::test {

/// Writes an executable shell script into `folder`, to stand for a command-line tool; `body` follows the first line.
std::filesystem::path writeTool(const TemporaryFolder& folder, std::string_view name, std::string_view body);

}  // namespace tq::test
