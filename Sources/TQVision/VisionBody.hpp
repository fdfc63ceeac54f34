#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TQPlatform/JSON/JSON.hpp"
#include "TQVision/VisionProvider.hpp"

namespace tq {

/// The JSON text of a request's body around its pictures.
struct VisionBody {
  std::string head;                 ///< up to the first picture
  std::string_view pictureOpening;  ///< before the base64 text of each picture
  std::string_view pictureClosing;  ///< behind it
  std::string tail;                 ///< after the last picture
};

/// `value` as compact JSON. Throws `JSONError`.
std::string jsonText(const JSONValue& value);

/// The members that open the body in every shape, behind the opening brace: model, max_tokens and temperature.
std::string bodyStart(const std::string& modelId, const VisionRequest& request);

/// The whole text, each frame's JPEG in its place as base64. The frames of a clip are many megabytes: the text is
/// written once, into memory of exactly its size.
std::string joinedBody(const VisionBody& body, const Shared<std::vector<ExtractedFrame>>& frames);

}  // namespace tq
