#include "TQCore/RecordJSON.hpp"

namespace tq {

DecodingError::DecodingError(std::string problem, std::string path)
    : std::runtime_error(path.empty() ? problem : path + ": " + problem),
      problem_(std::move(problem)),
      path_(std::move(path)) {}

DecodingError DecodingError::within(const std::string& step) const {
  const bool joinsDirectly = path_.empty() || path_.starts_with('[');
  return DecodingError(problem_, joinsDirectly ? step + path_ : step + "." + path_);
}

}  // namespace tq
