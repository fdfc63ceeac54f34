#include "TQVision/VersionedURL.hpp"

#include <string>

namespace tq {

WebURL versionedURL(const WebURL& base, std::string_view path) {
  const std::string& text = base.absoluteString();
  const bool namesVersion = text.ends_with("/v1") || text.ends_with("/v1/");
  return base.appendingPath((namesVersion ? "" : "v1/") + std::string(path));
}

}  // namespace tq
