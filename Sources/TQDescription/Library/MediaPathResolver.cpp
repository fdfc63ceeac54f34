#include "TQDescription/Library/MediaPathResolver.hpp"

#include <string>
#include <system_error>

namespace tq {
namespace {

namespace fs = std::filesystem;

/// Without ".", ".." and the slash at the end that a folder may be written with.
fs::path standardized(const fs::path& path) {
  const fs::path normal = path.lexically_normal();
  return normal.has_filename() ? normal : normal.parent_path();
}

}  // namespace

std::optional<fs::path> MediaPathResolver::resolve(const fs::path& sidecarURL, std::string_view sourceFilename) {
  constexpr std::string_view forbidden("/\0", 2);
  if (sourceFilename.empty() || sourceFilename.find_first_of(forbidden) != std::string_view::npos) return std::nullopt;
  std::error_code error;
  const fs::path sidecar = fs::absolute(sidecarURL, error);
  if (error) return std::nullopt;
  const fs::path folder = standardized(sidecar.parent_path());
  fs::path candidate = standardized(folder / sourceFilename);
  std::string prefix = folder.native();
  if (!prefix.ends_with('/')) prefix += '/';
  if (candidate.native() != folder.native() && !candidate.native().starts_with(prefix)) return std::nullopt;
  return candidate;
}

}  // namespace tq
