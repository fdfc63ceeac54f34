#include "TQDescription/SidecarNames.hpp"

namespace tq {
namespace {

constexpr const char* infix = ".description";

std::string extensionOf(SidecarKind kind) {
  switch (kind) {
    case SidecarKind::markdown: return ".md";
    case SidecarKind::json: return ".json";
    case SidecarKind::poster: return ".jpg";
  }
  return "";
}

}  // namespace

std::string stemOf(const std::filesystem::path& file) {
  return file.stem().string();
}

std::filesystem::path sidecarFolder(const std::filesystem::path& clip, const OutputConfig& config) {
  return config.sidecarDirectory.value_or(clip.parent_path());
}

std::string sidecarName(const std::string& stem, SidecarKind kind) {
  return stem + infix + extensionOf(kind);
}

std::string numberedSidecarName(const std::string& stem, int number, SidecarKind kind) {
  return stem + infix + " (" + std::to_string(number) + ")" + extensionOf(kind);
}

bool isJSONSidecar(const std::filesystem::path& file) {
  static const std::string ending = sidecarName("", SidecarKind::json);
  return file.filename().native().ends_with(ending);
}

}  // namespace tq
