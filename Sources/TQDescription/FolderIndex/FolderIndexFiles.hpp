#pragma once

#include <filesystem>

#include "TQDescription/FolderIndex/FolderIndex.hpp"

namespace tq {

/// Writes `_INDEX.json` and `_INDEX.md` into `folder`, each in one step and in place of an older one. Throws
/// `SystemError`, and `JSONError` for a number that is not finite; nothing is written then.
void writeFolderIndex(const std::filesystem::path& folder, const FolderIndex& index);

}  // namespace tq
