#pragma once

#include <filesystem>

namespace tq {

/// The current user's home folder, absolute: the environment's HOME, else what the system's user table says, else "/".
std::filesystem::path homeFolder();

}  // namespace tq
