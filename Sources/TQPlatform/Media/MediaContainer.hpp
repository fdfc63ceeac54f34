#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tq {

/// What libavformat, and so any tool made of it, takes a file for: the name of its demuxer, such as "matroska,webm".
/// Found by the content and, where that is not clear, the extension; nothing but the file's beginning is read. Absent
/// when it knows none. Throws `SystemError` when the file cannot be read and `MediaError` when it is no regular file.
std::optional<std::string> containerOf(const std::filesystem::path& file);

}  // namespace tq
