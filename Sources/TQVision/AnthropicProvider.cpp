#include "TQVision/AnthropicProvider.hpp"

#include "TQCore/TQError.hpp"
#include "TQVision/VersionedURL.hpp"
#include "TQVision/VisionAnswer.hpp"
#include "TQVision/VisionBody.hpp"

namespace tq {

AnthropicProvider::AnthropicProvider(HTTPProviderConfig config, std::shared_ptr<URLSession> urlSession,
                                     std::shared_ptr<const Clock> clock)
    : HTTPVisionProvider(std::move(config), std::move(urlSession), std::move(clock)) {}

WebURL AnthropicProvider::messagesURL(const WebURL& base) {
  return versionedURL(base, "messages");
}

void AnthropicProvider::addHeaders(URLRequest& request, const std::string& apiKey) const {
  if (!apiKey.empty()) request.setHeader("x-api-key", apiKey);
  request.setHeader("anthropic-version", "2023-06-01");
}

std::string AnthropicProvider::buildBody(const VisionRequest& request) const {
  return joinedBody(
      {.head = bodyStart(modelId(), request) + R"(,"system":)" + jsonText(request.systemPrompt) +
               R"(,"messages":[{"role":"user","content":[)",
       .pictureOpening = R"({"type":"image","source":{"type":"base64","media_type":"image/jpeg","data":")",
       .pictureClosing = R"("}},)",
       .tail = R"({"type":"text","text":)" + jsonText(request.userPrompt) + "}]}]}"},
      request.frames);
}

VisionResponse AnthropicProvider::parseResponse(ByteView data) const {
  const VisionAnswer answer(data);
  const JSONValue::Array* blocks = VisionAnswer::objects(answer.root(), "content");
  std::string text = blocks ? VisionAnswer::joinedTexts(*blocks, "text") : "";
  if (text.empty()) throw TQError::providerDecodeFailure("no text blocks in response");
  return {.rawText = std::move(text),
          .modelId = answer.modelId(modelId()),
          .inputTokens = answer.usage("input_tokens"),
          .outputTokens = answer.usage("output_tokens")};
}

}  // namespace tq
