#include "TQVision/VisionBody.hpp"

#include "TQPlatform/Network/Base64.hpp"

namespace tq {

std::string jsonText(const JSONValue& value) {
  return writeJSON(value, JSONLayout::compact);
}

std::string bodyStart(const std::string& modelId, const VisionRequest& request) {
  return R"({"model":)" + jsonText(modelId) + R"(,"max_tokens":)" + jsonText(request.maxTokens) + R"(,"temperature":)" +
         jsonText(request.temperature);
}

std::string joinedBody(const VisionBody& body, const Shared<std::vector<ExtractedFrame>>& frames) {
  const std::vector<ExtractedFrame>& pictures = framesOf(frames);

  std::size_t size = body.head.size() + body.tail.size();
  for (const ExtractedFrame& frame : pictures)
    size += body.pictureOpening.size() + base64Length(frame.jpegData.size()) + body.pictureClosing.size();

  std::string text;
  text.reserve(size);
  text += body.head;
  for (const ExtractedFrame& frame : pictures) {
    text += body.pictureOpening;
    appendBase64(text, frame.jpegData);
    text += body.pictureClosing;
  }
  text += body.tail;
  return text;
}

}  // namespace tq
