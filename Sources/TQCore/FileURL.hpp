#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tq {

/// The file URL (RFC 8089) of an absolute path, such as "file:///clips/a%20b.mov": `/` and the characters that RFC 3986
/// calls pchar stand as they are, every other byte is percent-encoded. A relative path is taken from the current
/// folder.
std::string fileURL(const std::filesystem::path& path);

/// The path in a file URL without a foreign host, query or fragment, or the path that the text itself is when it begins
/// with `/`. Anything else is absent.
std::optional<std::filesystem::path> parseFileURL(std::string_view text);

}  // namespace tq
