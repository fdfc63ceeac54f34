#include "TQCore/VideoExtensions.hpp"

#include <algorithm>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

std::string lowercasedExtension(const std::filesystem::path& url) {
  const std::string extension = url.extension().string();
  return extension.empty() ? extension : lowercased(extension.substr(1));
}

bool VideoExtensions::isVideo(const std::filesystem::path& url) {
  return std::find(supported.begin(), supported.end(), lowercasedExtension(url)) != supported.end();
}

}  // namespace tq
